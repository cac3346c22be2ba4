#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <marlune/mscreen_capture_view.h>

#include <cstdint>

namespace marlune::bench {

/** Shows the first screen in a view of the library. Does not capture initially. */
class BenchScreen {
public:
    BenchScreen(Gpu& gpu, Picture picture);
    ~BenchScreen();
    BenchScreen(const BenchScreen&) = delete;
    BenchScreen& operator=(const BenchScreen&) = delete;

    void capture(bool on) const { facade_.set_active(on); }
    void render() const { facade_.render(); }
    uint64_t texture() const { return facade_.get_texture(); }

private:
    MScreenCaptureView facade_;
};

}  // namespace marlune::bench
