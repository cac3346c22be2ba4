#pragma once

#include <QBuffer>
#include <QByteArray>

#include <atomic>
#include <chrono>
#include <cstdint>

class QWebEngineUrlRequestJob;

namespace marlune {

/**
 * The bytes of a file on their way to a page. Belongs to the Qt thread; the engine reads it on a thread
 * of its own. Its parent is the request.
 *
 * A page may leave any number of replies unread. Those of the same content share their bytes, so that
 * the open replies of all pages hold each file once.
 */
class ResourceReply : public QBuffer {
    Q_OBJECT

public:
    /**
     * Copies the bytes, or shares those of an open reply. `range` is the request's header of that name.
     * @throws std::bad_alloc when there is no memory for so much.
     */
    ResourceReply(const uint8_t* bytes, uint64_t size, const QByteArray& range,
                  QWebEngineUrlRequestJob* request);
    ~ResourceReply() override;

    /** The bytes that the open replies of all pages hold. */
    static qsizetype held();

    /** Fails those of which nothing has been read for so long, and gives their number. */
    static qsizetype end_unread(std::chrono::milliseconds time);

    qint64 size() const override;
    bool seek(qint64 position) override;

protected:
    qint64 readData(char* data, qint64 size) override;

private:
    using Clock = std::chrono::steady_clock;

    void end();

    // The engine does not survive a range that begins behind the end. One that learns of no size sends
    // the whole file instead, as servers may.
    bool hides_size_;
    std::atomic<Clock::time_point> last_read_ = Clock::now();
};

}  // namespace marlune
