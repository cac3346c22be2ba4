#include "web/scheme_handler.h"

#include "web/mime_types.h"

#include <QBuffer>
#include <QUrl>
#include <QWebEngineUrlRequestJob>

namespace marlune {

void GodotSchemeHandler::requestStarted(QWebEngineUrlRequestJob* job)
{
    const QUrl url = job->requestUrl();
    QString path = url.path(QUrl::FullyDecoded);
    bool is_html = path.endsWith(u".html");
    if (path.endsWith(u'/')) {
        path += u"index.html";
        is_html = true;
    }
    if (m_resource_file.is_empty()) {
        qWarning("m_resource_file not set, returning...");
        return;
    }

    bool flag = false;
    uint64_t size = 0;
    const uint8_t* const bytes = m_resource_file.call(this, path.toStdString(), flag, size);
    if (size == 0 || !bytes)
        return job->fail(QWebEngineUrlRequestJob::UrlNotFound);

    // The bytes stay the host's, which may reuse them once the callback is called again: one copy.
    auto* const reply = new QBuffer(job);
    reply->setData(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    job->reply(is_html ? QByteArrayLiteral("text/html") : mime_type_for(url.toString()).toUtf8(),
               reply);
}

}  // namespace marlune
