#include "web/resource_reply.h"

#include <QRegularExpression>
#include <QWebEngineUrlRequestJob>

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <new>
#include <numeric>
#include <vector>

namespace marlune {

namespace {

// All replies that pages have not read to the end. Only on the Qt thread.
std::vector<ResourceReply*> open_replies;

bool holds(const ResourceReply& reply, const uint8_t* bytes, qsizetype size)
{
    return reply.data().size() == size
        && std::memcmp(reply.data().constData(), bytes, static_cast<size_t>(size)) == 0;
}

QByteArray copy_of(const uint8_t* bytes, uint64_t size)
{
    if (size > static_cast<uint64_t>(std::numeric_limits<qsizetype>::max()))
        throw std::bad_alloc();
    const auto length = static_cast<qsizetype>(size);
    const auto same = std::ranges::find_if(
        open_replies, [&](const ResourceReply* reply) { return holds(*reply, bytes, length); });
    if (same != open_replies.end())
        return (*same)->data();
    return QByteArray(reinterpret_cast<const char*>(bytes), length);
}

/** Whether the request is for the whole content, or for a part that certainly exists. */
bool is_within(const QByteArray& range, qsizetype size)
{
    if (range.isEmpty())
        return true;
    static const QRegularExpression first_byte(QStringLiteral("^bytes=([0-9]+)-[0-9]*$"));
    const auto match = first_byte.match(QString::fromLatin1(range));
    bool is_number = false;
    const qlonglong first = match.captured(1).toLongLong(&is_number);
    return is_number && first < size;
}

}  // namespace

ResourceReply::ResourceReply(const uint8_t* bytes, uint64_t size, const QByteArray& range,
                             QWebEngineUrlRequestJob* request)
    : QBuffer(request)
{
    setData(copy_of(bytes, size));
    hides_size_ = !is_within(range, data().size());
    open_replies.push_back(this);
}

ResourceReply::~ResourceReply()
{
    std::erase(open_replies, this);
}

qsizetype ResourceReply::held()
{
    std::map<const char*, qsizetype> contents;
    for (const ResourceReply* const reply : open_replies)
        contents.emplace(reply->data().constData(), reply->data().size());
    return std::accumulate(contents.begin(), contents.end(), qsizetype(0),
                           [](qsizetype sum, const auto& content) { return sum + content.second; });
}

qsizetype ResourceReply::end_unread(std::chrono::milliseconds time)
{
    const Clock::time_point limit = Clock::now() - time;
    qsizetype count = 0;
    for (ResourceReply* const reply : open_replies) {
        if (reply->last_read_.load() < limit) {
            reply->end();
            ++count;
        }
    }
    return count;
}

qint64 ResourceReply::size() const
{
    return hides_size_ ? 0 : QBuffer::size();
}

bool ResourceReply::seek(qint64 position)
{
    return !hides_size_ && QBuffer::seek(position);
}

qint64 ResourceReply::readData(char* data, qint64 size)
{
    last_read_ = Clock::now();
    return QBuffer::readData(data, size);
}

/** The engine checks for a failure at its next read, which the signal triggers. */
void ResourceReply::end()
{
    if (auto* const request = qobject_cast<QWebEngineUrlRequestJob*>(parent()))
        request->fail(QWebEngineUrlRequestJob::RequestFailed);
    emit readyRead();
}

}  // namespace marlune
