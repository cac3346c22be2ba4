#pragma once

#include "support/gpu.h"
#include "support/picture.h"

class QObject;

namespace marlune::bench {

class RawScene;

/**
 * The host's side of a raw scene, like a facade of a view: each call goes to the Qt thread by Qt's
 * own blocking connection. `qt_thread` is any object that lives on that thread.
 */
class RawView {
public:
    RawView(QObject* qt_thread, const Gpu& gpu, Picture picture);
    ~RawView();
    RawView(const RawView&) = delete;
    RawView& operator=(const RawView&) = delete;

    void render() const;
    void mouse_move(uint32_t x, uint32_t y) const;
    int get_refresh_rate() const;

private:
    QObject* qt_thread_;
    RawScene* scene_ = nullptr;
};

}  // namespace marlune::bench
