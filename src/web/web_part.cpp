#include "runtime/web_part.h"

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

namespace {

GodotSchemeHandler* handler = nullptr;

}  // namespace

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
    handler = new GodotSchemeHandler;
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

QObject* scheme_handler()
{
    return handler;
}

CallbackSlot<uint8_t*(std::string, bool&, uint64_t&)>& resource_file()
{
    return handler->resource_file();
}

QString storage_path()
{
    return record().folder;
}

}  // namespace marlune::web_part
