#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <marlune/mvideo_player_view.h>

#include <cstdint>
#include <string>

namespace marlune::bench {

enum class Controls { Off, Shown };

/**
 * Plays a clip in a player of the library. Initially it has drawn a first frame, without the clip.
 */
class BenchVideo {
public:
    BenchVideo(Gpu& gpu, Picture picture, const std::string& clip, Controls controls);
    ~BenchVideo();
    BenchVideo(const BenchVideo&) = delete;
    BenchVideo& operator=(const BenchVideo&) = delete;

    /** Plays the clip from its start, repeatedly. */
    void play() const { facade_.play(); }
    void stop() const { facade_.stop(); }
    void render() const { facade_.render(); }
    uint64_t texture() const { return facade_.get_texture(); }

    uint64_t position() const { return facade_.get_position(); }
    MVideoPlayerView::Metadata metadata() const { return facade_.get_metadata(); }

private:
    MVideoPlayerView facade_;
};

}  // namespace marlune::bench
