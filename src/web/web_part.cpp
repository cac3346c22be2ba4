#include "web/web_part.h"

#include "views/resource_server.h"
#include "web/popup_catcher.h"
#include "web/profile.h"
#include "web/published_objects.h"
#include "web/scheme_handler.h"
#include "web/url_interceptor.h"
#include "web/web_view.h"

#include <QtQml>
#include <QtWebEngineQuick>
#include <QWebEngineUrlScheme>

namespace marlune::web_part {

void register_scheme()
{
    QWebEngineUrlScheme scheme("res");
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
    scheme.setDefaultPort(QWebEngineUrlScheme::PortUnspecified);
    scheme.setFlags(
        QWebEngineUrlScheme::LocalScheme | QWebEngineUrlScheme::LocalAccessAllowed
        | QWebEngineUrlScheme::ServiceWorkersAllowed | QWebEngineUrlScheme::ViewSourceAllowed
        | QWebEngineUrlScheme::ContentSecurityPolicyIgnored | QWebEngineUrlScheme::FetchApiAllowed);
    QWebEngineUrlScheme::registerScheme(scheme);
}

void initialize_engine()
{
    QtWebEngineQuick::initialize();
}

void set_up_profile()
{
    set_up_shared_profile();
    auto* const handler = new GodotSchemeHandler;
    resource_server() = {handler, &handler->resource_file()};
    serve_res(handler);
    qmlRegisterType<GodotURLInterceptor>("Web", 1, 0, "GodotURLInterceptor");
    PublishedObjects::register_type();
    install_popup_catcher();
}

bool has_pages()
{
    return WebView::has_pages();
}

void close_pages()
{
    WebView::close_pages();
}

}  // namespace marlune::web_part
