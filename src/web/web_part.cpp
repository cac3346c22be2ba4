#include "runtime/web_part.h"

#include "web/scheme_handler.h"

#include <QQuickWebEngineProfile>
#include <QtWebEngineQuick>
#include <QWebEngineUrlScheme>

#include <utility>

namespace marlune::web_part {

namespace {

QQuickWebEngineProfile* shared_profile = nullptr;
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
    shared_profile = QQuickWebEngineProfile::defaultProfile();
    shared_profile->setSpellCheckEnabled(false);
    shared_profile->setStorageName(QStringLiteral("Default"));
    shared_profile->setPersistentCookiesPolicy(QQuickWebEngineProfile::ForcePersistentCookies);

    handler = new GodotSchemeHandler;
    shared_profile->installUrlSchemeHandler("res", handler);
}

QObject* scheme_handler()
{
    return handler;
}

void set_resource_file(std::function<uint8_t*(std::string, bool&, uint64_t&)> callback)
{
    handler->set_resource_file(std::move(callback));
}

}  // namespace marlune::web_part
