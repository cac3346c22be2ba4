#include "raw/scheme.h"

#include "support/files.h"

#include <QBuffer>
#include <QMetaObject>
#include <QQuickWebEngineProfile>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>
#include <QWebEngineUrlSchemeHandler>

namespace marlune::bench {

namespace {

class Handler : public QWebEngineUrlSchemeHandler {
public:
    using QWebEngineUrlSchemeHandler::QWebEngineUrlSchemeHandler;

    void requestStarted(QWebEngineUrlRequestJob* job) override
    {
        const QString path = job->requestUrl().path();
        const File file = find_file(path.toStdString());
        if (!file.bytes)
            return job->fail(QWebEngineUrlRequestJob::UrlNotFound);
        auto* const reply = new QBuffer(job);
        reply->setData(reinterpret_cast<const char*>(file.bytes),
                       static_cast<qsizetype>(file.size));
        job->reply(mime_type(path), reply);
    }

private:
    static QByteArray mime_type(const QString& path)
    {
        if (path.endsWith(u".html"))
            return QByteArrayLiteral("text/html");
        if (path.endsWith(u".js"))
            return QByteArrayLiteral("text/javascript");
        return QByteArrayLiteral("application/octet-stream");
    }
};

}  // namespace

void register_raw_scheme()
{
    // With the same properties as the library's scheme.
    QWebEngineUrlScheme scheme("raw");
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
    scheme.setDefaultPort(QWebEngineUrlScheme::PortUnspecified);
    scheme.setFlags(
        QWebEngineUrlScheme::LocalScheme | QWebEngineUrlScheme::LocalAccessAllowed
        | QWebEngineUrlScheme::ServiceWorkersAllowed | QWebEngineUrlScheme::ViewSourceAllowed
        | QWebEngineUrlScheme::ContentSecurityPolicyIgnored | QWebEngineUrlScheme::FetchApiAllowed);
    QWebEngineUrlScheme::registerScheme(scheme);
}

void install_raw_scheme(QObject* qt_thread)
{
    const auto install = [] {
        QQuickWebEngineProfile* const profile = QQuickWebEngineProfile::defaultProfile();
        profile->installUrlSchemeHandler("raw", new Handler(profile));
    };
    QMetaObject::invokeMethod(qt_thread, install, Qt::BlockingQueuedConnection);
}

}  // namespace marlune::bench
