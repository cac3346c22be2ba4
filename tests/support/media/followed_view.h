#pragma once

#include "support/host_view.h"
#include "support/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

// Values of the public interface that hosts set and read.
enum FillMode { STRETCH, PRESERVE_ASPECT_FIT, PRESERVE_ASPECT_CROP };

/** One call of a callback by a view. */
struct ViewEvent {
    std::string name;   // of the callback
    std::string value;  // its arguments as text, with spaces between them
    std::thread::id thread;
};

std::ostream& operator<<(std::ostream& out, const ViewEvent& event);

/** All calls of a view's callbacks, in their order. For any thread. */
class EventLog {
public:
    template <typename... Values>
    void add(const std::string& name, const Values&... values)
    {
        std::ostringstream text;
        text << std::boolalpha;
        [[maybe_unused]] const char* separator = "";
        ((text << std::exchange(separator, " ") << values), ...);
        const std::lock_guard lock(mutex_);
        events_.push_back({name, text.str(), std::this_thread::get_id()});
    }

    std::vector<ViewEvent> all() const;

    /** The events from `first` on, each as its name and value: "playing_changed true". */
    std::vector<std::string> texts(size_t first = 0) const;

    /** The same as one line, for messages. */
    std::string describe(size_t first = 0) const;

    bool has(const std::string& name, size_t first = 0) const;
    bool has(const std::string& name, const std::string& value, size_t first = 0) const;

private:
    mutable std::mutex mutex_;
    std::vector<ViewEvent> events_;
};

/**
 * A view whose callbacks all write to a log; the derived class registers them. The members that
 * wait draw frames meanwhile. An AssertionResult states the actual content if a wait fails.
 */
template <typename Facade>
class FollowedView : public HostViewOf<Facade> {
public:
    using HostViewOf<Facade>::HostViewOf;

    std::vector<ViewEvent> events() const { return log_->all(); }

    /** See EventLog::texts(). */
    std::vector<std::string> reports(size_t first = 0) const { return log_->texts(first); }

    /** Waits for an event among those from `first` on. */
    testing::AssertionResult wait_for_event(const std::string& name, const std::string& value,
                                            size_t first = 0)
    {
        if (this->draw_until([&] { return log_->has(name, value, first); }, PATIENCE))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << name << " " << value << " was not reported, but " << log_->describe(first);
    }

    testing::AssertionResult wait_for_event(const std::string& name, size_t first = 0)
    {
        if (this->draw_until([&] { return log_->has(name, first); }, PATIENCE))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << name << " was not reported, but " << log_->describe(first);
    }

    /** Waits until a pixel of the texture has a colour. */
    testing::AssertionResult wait_for_colour(uint32_t x, uint32_t y, Colour colour,
                                             int tolerance = 6)
    {
        if (this->draw_until(
                [&] { return is_close(this->picture().pixel(x, y), colour, tolerance); }))
            return testing::AssertionSuccess();
        const Image last = this->picture();
        return testing::AssertionFailure()
            << "pixel (" << x << ", " << y << ") is " << last.pixel(x, y) << ", not " << colour
            << "; see " << keep_picture(last);
    }

protected:
    // Opening a file or a camera takes milliseconds, but longer if other tests keep the machine
    // busy.
    static constexpr auto PATIENCE = std::chrono::seconds(20);

    std::shared_ptr<EventLog> log() const { return log_; }

private:
    std::shared_ptr<EventLog> log_ = std::make_shared<EventLog>();
};

}  // namespace marlune::test
