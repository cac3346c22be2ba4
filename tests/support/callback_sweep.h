#pragma once

#include "support/vulkan/vulkan_host.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <utility>
#include <vector>

/** For tests that call members of a facade from within its callbacks, each pair in turn. */
namespace marlune::test {

template <typename Facade>
struct Member {
    const char* name;
    void (*call)(Facade& view);
};

/** What one test calls: one member that acts, or all that only ask and store. */
template <typename Facade>
struct MemberGroup {
    const char* name;
    std::vector<Member<Facade>> members;
};

template <typename Facade>
std::string name_of(const testing::TestParamInfo<MemberGroup<Facade>>& info)
{
    return info.param.name;
}

/** Something that a host does for a callback to come. */
template <typename HostView>
struct Occasion {
    const char* callback;
    void (*provoke)(HostView& view);
};

/** Calls the members in the first call of one callback. Callbacks share it, and outlive their test. */
template <typename Facade>
class CallerInCallback {
public:
    CallerInCallback(const Facade& view, std::string callback, MemberGroup<Facade> group)
        : view_(view), callback_(std::move(callback)), group_(std::move(group))
    {
    }

    void on(const char* name)
    {
        // What the members give rise to comes here too.
        if (callback_ != name || std::exchange(began_, true))
            return;
        for (const Member<Facade>& member : group_.members)
            member.call(view_);
        called_ = true;
    }

    bool has_called() const { return called_; }

private:
    Facade view_;
    const std::string callback_;
    const MemberGroup<Facade> group_;
    bool began_ = false;
    std::atomic<bool> called_ = false;
};

/** The members of any view that neither load nor take anything away. */
template <typename Facade>
std::vector<Member<Facade>> members_of_any_view()
{
    return {
        {"get_resolution", [](Facade& view) { view.get_resolution(); }},
        {"get_refresh_rate", [](Facade& view) { view.get_refresh_rate(); }},
        {"get_mips_count", [](Facade& view) { view.get_mips_count(); }},
        {"get_texture", [](Facade& view) { view.get_texture(); }},
        {"get_physical_screens", [](Facade& view) { view.get_physical_screens(); }},
        {"set_resolution", [](Facade& view) { view.set_resolution(view.get_resolution()); }},
        {"set_refresh_rate", [](Facade& view) { view.set_refresh_rate(60); }},
        {"set_mipmaps_enabled", [](Facade& view) { view.set_mipmaps_enabled(false); }},
        {"set_view_monitor", [](Facade& view) { view.set_view_monitor(host().instance()); }},
        {"set_statistics_monitor",
         [](Facade& view) {
             view.set_statistics_monitor(host().physical_device(), host().device());
         }},
        {"set_func_javascript_console_log",
         [](Facade& view) {
             view.set_func_javascript_console_log([](int, std::string, int, std::string) {});
         }},
        {"mouse_move", [](Facade& view) { view.mouse_move(1, 1); }},
        {"mouse_wheel_up", [](Facade& view) { view.mouse_wheel_up(1, 1); }},
        {"mouse_wheel_down", [](Facade& view) { view.mouse_wheel_down(1, 1); }},
        {"mouse_click", [](Facade& view) { view.mouse_click(0, 0, 1, 1); }},
        {"key_event", [](Facade& view) { view.key_event(0x41, 0, "a"); }},
    };
}

/** A group for each member that acts, and one for all others. */
template <typename Facade>
std::vector<MemberGroup<Facade>> groups_of(std::vector<Member<Facade>> acting,
                                           std::vector<Member<Facade>> others)
{
    const auto common = members_of_any_view<Facade>();
    others.insert(others.end(), common.begin(), common.end());
    std::vector<MemberGroup<Facade>> groups;
    for (const Member<Facade>& member : acting)
        groups.push_back({member.name, {member}});
    groups.push_back({"all_others", std::move(others)});
    return groups;
}

}  // namespace marlune::test
