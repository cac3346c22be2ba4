// A facade alone: a small value that refers to a view, or to none.

#include "support/host_view.h"
#include "support/library.h"

#include <marlune/marlune.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

namespace marlune {

using namespace test;

static_assert(sizeof(MView) == 2 * sizeof(void*));
static_assert(sizeof(MQuickView) == sizeof(MView));
static_assert(std::is_base_of_v<MView, MQuickView>);
static_assert(std::is_trivially_destructible_v<MView>);
static_assert(std::is_trivially_destructible_v<MQuickView>);
static_assert(!std::has_virtual_destructor_v<MView>);
static_assert(std::is_copy_constructible_v<MQuickView> && std::is_copy_assignable_v<MQuickView>);
static_assert(std::is_move_constructible_v<MQuickView> && std::is_move_assignable_v<MQuickView>);

namespace {

using Resolution = std::tuple<uint32_t, uint32_t>;

/** The pointer that follows the pointer to the virtual table. */
const void* view_of(const MView& facade)
{
    const void* fields[2];
    std::memcpy(fields, &facade, sizeof(fields));
    return fields[1];
}

void expect_defaults_of_no_view(const MView& facade)
{
    EXPECT_EQ(facade.get_texture(), 0u);
    EXPECT_EQ(facade.get_mips_count(), 1);
    EXPECT_EQ(facade.get_refresh_rate(), 60);
    EXPECT_EQ(facade.get_resolution(), Resolution(0, 0));
}

void call_every_member_without_result(const MView& facade)
{
    facade.set_view_monitor(host().instance());
    facade.set_statistics_monitor(host().physical_device(), host().device());
    facade.set_resolution({100, 100});  // with a view, this logs a warning
    facade.set_refresh_rate(0);         // so does this
    facade.set_mipmaps_enabled(true);
    facade.render();
    facade.reset();
    facade.mouse_click(0, 0, 1, 1);
    facade.mouse_move(1, 1);
    facade.mouse_wheel_down(1, 1);
    facade.mouse_wheel_up(1, 1);
    facade.key_event(0x41, 0, "A");
    facade.set_func_javascript_console_log([](int, std::string, int, std::string) {});
    facade.set_func_resource_file_free([] {});
}

TEST(PlainFacade, has_no_view)
{
    EXPECT_EQ(view_of(MView()), nullptr);
}

TEST(PlainFacade, returns_the_defaults)
{
    expect_defaults_of_no_view(MView());
}

TEST(PlainFacade, does_nothing_for_every_member_without_a_result)
{
    const MView facade;
    call_every_member_without_result(facade);
    expect_defaults_of_no_view(facade);
}

TEST(PlainFacade, may_be_destroyed_without_effect)
{
    MView facade;
    facade.destroy();
    facade.destroy();
    expect_defaults_of_no_view(facade);
}

TEST(PlainFacade, registers_the_resource_callback_for_all_views)
{
    start_library();
    const auto token = std::make_shared<int>();
    const auto callback = [token](std::string, bool&, uint64_t&) -> uint8_t* { return nullptr; };
    MView().set_func_resource_file(callback);
    EXPECT_EQ(token.use_count(), 3) << "the library keeps the callback";
    MQuickView other;
    other.set_func_resource_file({});
    EXPECT_EQ(token.use_count(), 2) << "the callback of all views was replaced";
    other.destroy();
}

TEST(PlainFacade, releases_the_callback_for_freeing_and_never_calls_it)
{
    bool called = false;
    const auto token = std::make_shared<int>();
    MView().set_func_resource_file_free([&called, token] { called = true; });
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_FALSE(called);
}

TEST(QuickFacade, has_a_view_with_the_defaults_of_views)
{
    start_library();
    MQuickView facade;
    EXPECT_NE(view_of(facade), nullptr);
    EXPECT_EQ(facade.get_resolution(), Resolution(1920, 1080));
    EXPECT_EQ(facade.get_refresh_rate(), 63);
    EXPECT_EQ(facade.get_mips_count(), 1);
    EXPECT_EQ(facade.get_texture(), 0u);
    facade.destroy();
}

TEST(QuickFacade, shares_its_view_with_copies)
{
    start_library();
    MQuickView original;
    MQuickView constructed(original);
    MView base;
    base = original;
    constructed.set_resolution({300, 400});
    EXPECT_EQ(original.get_resolution(), Resolution(300, 400));
    EXPECT_EQ(base.get_resolution(), Resolution(300, 400));
    base.destroy();
}

TEST(QuickFacade, keeps_its_view_when_it_is_moved_from)
{
    start_library();
    MView original = MQuickView();
    MView constructed(std::move(original));
    MView assigned;
    assigned = std::move(constructed);
    EXPECT_NE(view_of(assigned), nullptr);
    EXPECT_EQ(view_of(assigned), view_of(original));
    EXPECT_EQ(view_of(assigned), view_of(constructed));
    assigned.destroy();
}

TEST(QuickFacade, survives_assignment_to_itself)
{
    start_library();
    MView facade = MQuickView();
    const MView& same = facade;
    facade = same;
    EXPECT_EQ(facade.get_resolution(), Resolution(1920, 1080));
    facade.destroy();
}

TEST(QuickFacade, leaves_the_view_alive_when_it_goes_out_of_scope)
{
    start_library();
    MView survivor;
    {
        MQuickView facade;
        facade.set_resolution({300, 400});
        survivor = facade;
    }
    EXPECT_EQ(survivor.get_resolution(), Resolution(300, 400));
    survivor.destroy();
}

TEST(QuickFacade, has_no_view_after_destroy)
{
    start_library();
    MQuickView facade;
    facade.destroy();
    EXPECT_EQ(view_of(facade), nullptr);
    expect_defaults_of_no_view(facade);
    call_every_member_without_result(facade);
    EXPECT_FALSE(facade.load("Scenes", "Quadrants"));
}

TEST(QuickFacade, may_be_destroyed_twice)
{
    start_library();
    MQuickView facade;
    facade.destroy();
    facade.destroy();
    expect_defaults_of_no_view(facade);
}

TEST(QuickFacade, that_is_stale_returns_the_defaults)
{
    HostView view;
    ASSERT_TRUE(view.load("Quadrants"));
    MQuickView stale = view.facade();
    view->destroy();
    EXPECT_NE(view_of(stale), nullptr) << "the copy does not notice that its view is destroyed";
    expect_defaults_of_no_view(stale);
    call_every_member_without_result(stale);
    EXPECT_FALSE(stale.load("Scenes", "Quadrants"));
    stale.destroy();
    EXPECT_EQ(view_of(stale), nullptr);
}

TEST(Library, can_be_copied_without_effect)
{
    M one;
    M other(one);
    EXPECT_EQ(&(one = other), &one);
    EXPECT_EQ(&(one = M()), &one);
    static_assert(std::is_empty_v<M>, "there is no state to be copied");
}

TEST(Library, reports_its_version)
{
    EXPECT_EQ(M::get_version_full(), "0.1.2+4b4e766");
}

TEST(Library, keeps_the_protocol_list_whatever_the_argument_of_the_setter)
{
    const std::string before = opts::FFMPEG_PROTOCOL_WHITELIST;
    EXPECT_TRUE(before.starts_with("file,http,")) << before;
    M::set_ffmpeg_protocol_whitelist("file");
    EXPECT_EQ(opts::FFMPEG_PROTOCOL_WHITELIST, before);
}

TEST(Library, keeps_the_debug_option_whatever_the_argument_of_the_setter)
{
    M::set_ffmpeg_debug(true);
    EXPECT_FALSE(opts::FFMPEG_DEBUG);
}

TEST(Library, publishes_its_objects_once_it_is_ready)
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    EXPECT_NE(MARLUNE, nullptr);
    EXPECT_NE(MARLUNE_APP, nullptr);
    EXPECT_NE(MARLUNE_CTX, nullptr);
}

}  // namespace

}  // namespace marlune
