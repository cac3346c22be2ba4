#pragma once

#include <chrono>

namespace marlune {

/** Decides when a view draws a frame, however often the host asks for one. */
class FramePacer {
public:
    /** In Hz; 60 at first. Warns of a rate below 1 and keeps the one before; more than 120 becomes
     * 120. */
    void set_rate(int rate);
    int rate() const;

    /** True once per interval: the caller is to draw the frame. */
    bool take_due_frame();

    /** Makes the next frame due at once. */
    void make_due();

    /** True when the host has not asked for frames lately, so that nobody sees the view. */
    bool is_idle() const;

private:
    using Clock = std::chrono::steady_clock;

    std::chrono::milliseconds interval_{16};
    Clock::time_point last_frame_ = Clock::now() - interval_;
};

}  // namespace marlune
