#pragma once

#include "support/getters.h"
#include "support/vulkan/vulkan_host.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/** For tests that call members of a facade inside its callbacks, each pair in turn. */
namespace marlune::test {

/**
 * The calls of one test: one member of a facade that acts, or all members that only read and store
 * values.
 */
template <typename Facade>
struct Member {
    const char* name;
    std::function<void(Facade& view)> call;
};

template <typename Facade>
std::string name_of(const testing::TestParamInfo<Member<Facade>>& info)
{
    return info.param.name;
}

/** An action of a host that makes the view call a callback. */
template <typename HostView>
struct Occasion {
    const char* callback;
    void (*provoke)(HostView& view);
};

/**
 * Calls a member in the first call of one callback. The callbacks share this object, and it
 * outlives its test.
 */
template <typename Facade>
class CallerInCallback {
public:
    CallerInCallback(const Facade& view, std::string callback, Member<Facade> member)
        : view_(view), callback_(std::move(callback)), member_(std::move(member))
    {
    }

    void on(const char* name)
    {
        // The member may itself cause calls of this callback.
        if (callback_ != name || std::exchange(began_, true))
            return;
        member_.call(view_);
        called_ = true;
    }

    bool has_called() const { return called_; }

private:
    Facade view_;
    const std::string callback_;
    const Member<Facade> member_;
    bool began_ = false;
    std::atomic<bool> called_ = false;
};

/** Calls the members that all views have and that neither load nor reset nor destroy. */
template <typename Facade>
void call_members_of_any_view(Facade& view)
{
    Getters<&Facade::get_resolution, &Facade::get_refresh_rate, &Facade::get_mips_count,
            &Facade::get_texture, &Facade::get_physical_screens>::call(view);
    view.set_resolution(view.get_resolution());
    view.set_refresh_rate(60);
    view.set_mipmaps_enabled(false);
    view.set_view_monitor(host().instance());
    view.set_statistics_monitor(host().physical_device(), host().device());
    view.set_func_javascript_console_log([](int, std::string, int, std::string) {});
    view.mouse_move(1, 1);
    view.mouse_wheel_up(1, 1);
    view.mouse_wheel_down(1, 1);
    view.mouse_click(0, 0, 1, 1);
    view.key_event(0x41, 0, "a");
}

/** The members that act, and one entry for all others. */
template <typename Facade>
std::vector<Member<Facade>> with_others(std::vector<Member<Facade>> acting,
                                        std::function<void(Facade& view)> call_others)
{
    acting.push_back({"all_others", [call_others](Facade& view) {
                          call_others(view);
                          call_members_of_any_view(view);
                      }});
    return acting;
}

}  // namespace marlune::test
