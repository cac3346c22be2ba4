#include "views/frame_pacer.h"

#include <QDebug>

#include <cmath>

namespace marlune {

namespace {

constexpr int maximum_rate = 120;
constexpr auto idle_after = std::chrono::milliseconds(250);

}  // namespace

void FramePacer::set_rate(int rate)
{
    if (rate < 1) {
        qWarning() << "bad refresh rate" << rate;
        return;
    }
    if (rate > maximum_rate) {
        qWarning() << "refresh rate " << rate << " too high, setting to 120";
        rate = maximum_rate;
    }
    const auto interval = static_cast<int>(std::round(1000.0 / rate));
    // 60 Hz: a host that asks every 16.7 ms must not find every other frame not yet due.
    interval_ = std::chrono::milliseconds(interval == 17 ? 16 : interval);
}

int FramePacer::rate() const
{
    return static_cast<int>(std::round(1 / (static_cast<double>(interval_.count()) / 1000.0)));
}

bool FramePacer::take_due_frame()
{
    const auto now = Clock::now();
    if (now - last_frame_ < interval_)
        return false;
    last_frame_ = now;
    return true;
}

void FramePacer::make_due()
{
    last_frame_ = Clock::now() - interval_;
}

bool FramePacer::is_idle() const
{
    return Clock::now() - last_frame_ > idle_after;
}

}  // namespace marlune
