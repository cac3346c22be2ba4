#include "web/scheme_handler.h"

#include "web/mime_types.h"
#include "web/resource_reply.h"

#include <QUrl>

#include <chrono>
#include <new>

namespace marlune {

namespace {

// The number of bytes that pages may leave unread before the next request has to wait.
constexpr qsizetype most_held = 512 * 1024 * 1024;
constexpr size_t most_waiting = 10'000;
// While requests wait, replies that a page has not read for this time fail: one page must not
// block all.
constexpr std::chrono::seconds longest_unread(5);

/** Returns the requested part of the file. Pages may write the header's name in any case. */
QByteArray range_of(const QWebEngineUrlRequestJob& request)
{
    const QMap<QByteArray, QByteArray> headers = request.requestHeaders();
    for (auto header = headers.begin(); header != headers.end(); ++header) {
        if (header.key().compare("range", Qt::CaseInsensitive) == 0)
            return header.value();
    }
    return {};
}

}  // namespace

GodotSchemeHandler::GodotSchemeHandler()
{
    room_timer_.setInterval(std::chrono::seconds(1));
    connect(&room_timer_, &QTimer::timeout, this, &GodotSchemeHandler::make_room);
}

void GodotSchemeHandler::requestStarted(QWebEngineUrlRequestJob* job)
{
    if (waiting_.empty() && ResourceReply::held() < most_held)
        serve(*job);
    else
        put_off(*job);
}

void GodotSchemeHandler::serve(QWebEngineUrlRequestJob& job)
{
    const QUrl url = job.requestUrl();
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
    // The callback may navigate the page, which deletes its request.
    const QPointer<QWebEngineUrlRequestJob> request(&job);
    const uint8_t* const bytes = m_resource_file.call(this, path.toStdString(), flag, size);
    if (!request)
        return;
    if (size == 0 || !bytes)
        return request->fail(QWebEngineUrlRequestJob::UrlNotFound);
    send(*request, is_html ? QStringLiteral("text/html") : mime_type_for(url.toString()), bytes,
         size);
}

void GodotSchemeHandler::serve_waiting()
{
    while (!waiting_.empty() && ResourceReply::held() < most_held) {
        const QPointer<QWebEngineUrlRequestJob> next = waiting_.front();
        waiting_.pop_front();
        if (next)
            serve(*next);
    }
}

void GodotSchemeHandler::put_off(QWebEngineUrlRequestJob& job)
{
    std::erase(waiting_, nullptr);
    if (waiting_.empty()) {
        qWarning(
            "marlune: pages have left %lld MiB of the game's files unread, so further requests "
            "wait until pages read or cancel their responses",
            static_cast<long long>(ResourceReply::held() / (1024 * 1024)));
    }
    if (waiting_.size() >= most_waiting)
        return job.fail(QWebEngineUrlRequestJob::RequestFailed);
    waiting_.emplace_back(&job);
    if (!room_timer_.isActive())
        room_timer_.start();
}

void GodotSchemeHandler::make_room()
{
    std::erase(waiting_, nullptr);
    if (waiting_.empty())
        return room_timer_.stop();
    if (const qsizetype count = ResourceReply::end_unread(longest_unread); count > 0) {
        qWarning(
            "marlune: %lld requests for the game's files failed: pages read nothing of them for "
            "5 s while other requests waited for their memory",
            static_cast<long long>(count));
    }
}

/** The bytes belong to the host, which may reuse their memory at the next call of the callback. */
void GodotSchemeHandler::send(QWebEngineUrlRequestJob& job, const QString& type,
                              const uint8_t* bytes, uint64_t size)
{
    try {
        auto* const reply = new ResourceReply(bytes, size, range_of(job), &job);
        connect(reply, &QObject::destroyed, this, &GodotSchemeHandler::serve_waiting,
                Qt::QueuedConnection);
        job.reply(type.toUtf8(), reply);
    } catch (const std::bad_alloc&) {
        qWarning(
            "marlune: the resource callback returned a size of %llu bytes, for which there is no "
            "memory",
            static_cast<unsigned long long>(size));
        job.fail(QWebEngineUrlRequestJob::RequestFailed);
    }
}

}  // namespace marlune
