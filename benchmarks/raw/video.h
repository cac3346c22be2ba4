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

/** A player of raw Qt, with sound, by blocking calls to the Qt thread. It has no picture of its own. */
class RawPlayer {
public:
    /** `qt_thread` is any object of that thread. */
    RawPlayer(QObject* qt_thread, const std::string& clip);
    ~RawPlayer();
    RawPlayer(const RawPlayer&) = delete;
    RawPlayer& operator=(const RawPlayer&) = delete;

    /** Where the pictures go. The sink must outlive it, and is of the Qt thread. */
    void set_sink(QVideoSink* sink);

    /** From the clip's start, over and over. */
    void play() const;
    void stop() const;

    uint64_t position() const;
    /** By the names of Qt's keys, as the library gives it. */
    std::map<std::string, std::string> metadata() const;

private:
    QObject* qt_thread_;
    QMediaPlayer* player_ = nullptr;
};

/** A clip in a scene of raw Qt. */
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

/** A clip that is decoded in time and then thrown away. */
class BareVideo {
public:
    BareVideo(QObject* qt_thread, const std::string& clip);
    ~BareVideo();
    BareVideo(const BareVideo&) = delete;
    BareVideo& operator=(const BareVideo&) = delete;

    void play() const { player_.play(); }
    void stop() const { player_.stop(); }

    /** How many pictures there have been. */
    int pictures() const { return pictures_; }

private:
    QVideoSink* sink_ = nullptr;
    std::atomic<int> pictures_ = 0;
    RawPlayer player_;
};

}  // namespace marlune::bench
