#include "web/scheme_handler.h"

#include "web/mime_types.h"
#include "web/resource_reply.h"

#include <QPointer>
#include <QUrl>
#include <QWebEngineUrlRequestJob>

#include <new>

namespace marlune {

namespace {

/** The part of the file that a page asks for. It may write the header's name in either case. */
QByteArray range_of(const QWebEngineUrlRequestJob& request)
{
    const QMap<QByteArray, QByteArray> headers = request.requestHeaders();
    for (auto header = headers.begin(); header != headers.end(); ++header) {
        if (header.key().compare("range", Qt::CaseInsensitive) == 0)
            return header.value();
    }
    return {};
}

/** The bytes stay the host's, which may reuse them once the callback is called again. */
void send(QWebEngineUrlRequestJob& request, const QString& type, const uint8_t* bytes,
          uint64_t size)
{
    try {
        auto* const reply = new ResourceReply(bytes, size, range_of(request), &request);
        request.reply(type.toUtf8(), reply);
    } catch (const std::bad_alloc&) {
        qWarning(
            "marlune: the resource callback has given a size of %llu bytes, for which there is no "
            "memory",
            static_cast<unsigned long long>(size));
        request.fail(QWebEngineUrlRequestJob::RequestFailed);
    }
}

}  // namespace

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
    // A callback may send the page elsewhere, and its request goes with it.
    const QPointer<QWebEngineUrlRequestJob> request(job);
    const uint8_t* const bytes = m_resource_file.call(this, path.toStdString(), flag, size);
    if (!request)
        return;
    if (size == 0 || !bytes)
        return request->fail(QWebEngineUrlRequestJob::UrlNotFound);
    send(*request, is_html ? QStringLiteral("text/html") : mime_type_for(url.toString()), bytes,
         size);
}

}  // namespace marlune
