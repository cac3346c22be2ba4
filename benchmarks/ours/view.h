#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <marlune/mquick_view.h>

#include <cstdint>

namespace marlune::bench {

/** Starts the library, and stops it on destruction. */
class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/** Gives a view a device and a size, as each host does before it loads. */
void set_up(const MView& view, Gpu& gpu, Picture picture);

/** A view of the library that shows the scene. Initially it has drawn a first frame. */
class BenchView {
public:
    BenchView(Gpu& gpu, Picture picture);
    ~BenchView();
    BenchView(const BenchView&) = delete;
    BenchView& operator=(const BenchView&) = delete;

    const MQuickView& facade() const { return facade_; }
    void render() const { facade_.render(); }

    /**
     * Returns the number of drawn frames. Reads it from the scene, through the host's own
     * interface.
     */
    uint64_t frames_drawn();

private:
    MQuickView facade_;
    uint64_t frames_drawn_ = 0;
};

/**
 * Waits like a host that draws sixty frames a second: each view that has drawn a frame is due
 * again, and all animations have advanced.
 */
void wait_for_next_frame();

}  // namespace marlune::bench
