#pragma once

#include "runtime/live_objects.h"
#include "views/resource_server.h"

#include <QPointer>
#include <QTimer>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlSchemeHandler>

#include <cstdint>
#include <deque>

namespace marlune {

/**
 * Serves the "res" scheme from the host's packed files. One instance per process, on the Qt thread.
 * It is never destroyed, because the profile on which it is installed is never destroyed either.
 */
class GodotSchemeHandler : public QWebEngineUrlSchemeHandler {
    Q_OBJECT

public:
    GodotSchemeHandler();

    /** The host's callback that returns the bytes of files. */
    ResourceFile& resource_file() { return m_resource_file; }

    void requestStarted(QWebEngineUrlRequestJob* job) override;

private:
    void serve(QWebEngineUrlRequestJob& job);
    void serve_waiting();
    void put_off(QWebEngineUrlRequestJob& job);
    void make_room();
    void send(QWebEngineUrlRequestJob& job, const QString& type, const uint8_t* bytes,
              uint64_t size);

    ResourceFile m_resource_file;
    /** Requests that wait until pages have read previous replies. */
    std::deque<QPointer<QWebEngineUrlRequestJob>> waiting_;
    /** Runs while requests are waiting. */
    QTimer room_timer_;
    LiveObject live_{this};
};

}  // namespace marlune
