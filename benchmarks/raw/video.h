#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <string>

class QMediaPlayer;
class QObject;
class QVideoSink;

namespace marlune::bench {

class RawScene;

/**
 * A player of raw Qt, with sound, used by blocking calls to the Qt thread. It displays nothing
 * itself.
 */
class RawPlayer {
public:
    /** `qt_thread` is any object that lives on that thread. */
    RawPlayer(QObject* qt_thread, const std::string& clip);
    ~RawPlayer();
    RawPlayer(const RawPlayer&) = delete;
    RawPlayer& operator=(const RawPlayer&) = delete;

    /**
     * Sets the sink for the frames. The sink lives on the Qt thread and must outlive the player.
     */
    void set_sink(QVideoSink* sink);

    /** Plays the clip from its start, repeatedly. */
    void play() const;
    void stop() const;

    uint64_t position() const;
    /** By the names of Qt's keys, like the library. */
    std::map<std::string, std::string> metadata() const;

private:
    QObject* qt_thread_;
    QMediaPlayer* player_ = nullptr;
};

/** Plays a clip in a scene of raw Qt. */
class RawVideo {
public:
    RawVideo(QObject* qt_thread, const Gpu& gpu, Picture picture, const std::string& clip);
    ~RawVideo();
    RawVideo(const RawVideo&) = delete;
    RawVideo& operator=(const RawVideo&) = delete;

    void play() const { player_.play(); }
    void stop() const { player_.stop(); }
    void render() const;
    uint64_t texture() const { return texture_; }

    uint64_t position() const { return player_.position(); }
    std::map<std::string, std::string> metadata() const { return player_.metadata(); }

private:
    RawScene* scene_ = nullptr;
    uint64_t texture_ = 0;
    RawPlayer player_;
};

/** Plays a clip whose frames are decoded in time and discarded. */
class BareVideo {
public:
    BareVideo(QObject* qt_thread, const std::string& clip);
    ~BareVideo();
    BareVideo(const BareVideo&) = delete;
    BareVideo& operator=(const BareVideo&) = delete;

    void play() const { player_.play(); }
    void stop() const { player_.stop(); }

    /** The number of frames so far. */
    int pictures() const { return pictures_; }

private:
    QVideoSink* sink_ = nullptr;
    std::atomic<int> pictures_ = 0;
    RawPlayer player_;
};

}  // namespace marlune::bench
