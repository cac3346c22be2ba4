#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <cstdint>

class QMediaCaptureSession;
class QObject;

namespace marlune::bench {

class RawScene;

/** The first screen in a scene of raw Qt. Does not capture when it is made. */
class RawScreen {
public:
    /** `qt_thread` is any object of that thread. */
    RawScreen(QObject* qt_thread, const Gpu& gpu, Picture picture);
    ~RawScreen();
    RawScreen(const RawScreen&) = delete;
    RawScreen& operator=(const RawScreen&) = delete;

    void capture(bool on) const;
    void render() const;
    uint64_t texture() const { return texture_; }

private:
    RawScene* scene_ = nullptr;
    QMediaCaptureSession* session_ = nullptr;
    uint64_t texture_ = 0;
};

}  // namespace marlune::bench
