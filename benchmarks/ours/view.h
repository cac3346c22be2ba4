#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <marlune/mquick_view.h>

#include <cstdint>

namespace marlune::bench {

/** Starts the library, and stops it when it goes. */
class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/** Gives a view a device and a size, as each host does before it loads. */
void set_up(const MView& view, Gpu& gpu, Picture picture);

/** A view of the library that shows the scene. Has drawn a first frame when it is made. */
class BenchView {
public:
    BenchView(Gpu& gpu, Picture picture);
    ~BenchView();
    BenchView(const BenchView&) = delete;
    BenchView& operator=(const BenchView&) = delete;

    const MQuickView& facade() const { return facade_; }
    void render() const { facade_.render(); }

    /** How many frames have been drawn. Asks the scene, through the host's own interface. */
    uint64_t frames_drawn();

private:
    MQuickView facade_;
    uint64_t frames_drawn_ = 0;
};

/**
 * Waits as a host does that draws sixty frames a second: each view that has been drawn by now is
 * due again, and all animations have moved on.
 */
void wait_for_next_frame();

}  // namespace marlune::bench
