#pragma once

#include "support/gpu.h"
#include "support/picture.h"

#include <cstdint>

class QMediaCaptureSession;
class QObject;

namespace marlune::bench {

class RawScene;

/** Shows the first screen in a scene of raw Qt. Does not capture initially. */
class RawScreen {
public:
    /** `qt_thread` is any object that lives on that thread. */
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
