#pragma once

#include <QBuffer>
#include <QByteArray>

#include <atomic>
#include <chrono>
#include <cstdint>

class QWebEngineUrlRequestJob;

namespace marlune {

/**
 * The reply to a request for a file. It belongs to the Qt thread; the engine reads it on another
 * thread. Its parent is the request.
 *
 * A page may leave any number of replies unread. Replies with the same content share their bytes,
 * so that the open replies of all pages hold each file once.
 */
class ResourceReply : public QBuffer {
    Q_OBJECT

public:
    /**
     * Copies the bytes, or shares those of an open reply. `range` is the request's header of that
     * name.
     * @throws std::bad_alloc if there is not enough memory.
     */
    ResourceReply(const uint8_t* bytes, uint64_t size, const QByteArray& range,
                  QWebEngineUrlRequestJob* request);
    ~ResourceReply() override;

    /** Returns the number of bytes that the open replies of all pages hold. */
    static qsizetype held();

    /** Fails the replies of which nothing has been read for this time, and returns their number. */
    static qsizetype end_unread(std::chrono::milliseconds time);

    qint64 size() const override;
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 size) override;

private:
    using Clock = std::chrono::steady_clock;

    void end();

    // The engine crashes on a range that begins after the end. If it does not know the size,
    // it sends the whole file instead, as servers may.
    bool hides_size_;
    std::atomic<Clock::time_point> last_read_ = Clock::now();
};

}  // namespace marlune
