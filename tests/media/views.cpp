// The rules that the facades of players, cameras and screens share.

#include "support/media/host_camera_view.h"
#include "support/media/host_screen_view.h"
#include "support/media/host_video_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>

namespace marlune::test {

namespace {

/** What differs between the kinds of view. */
template <typename View>
struct Kind;

template <>
struct Kind<HostVideoView> {
    using Facade = MVideoPlayerView;
    static constexpr const char* other_component[] = {"Debug", "DebugVideo"};

    static testing::AssertionResult show(HostVideoView& view)
    {
        const size_t first = view.events().size();
        if (const testing::AssertionResult opened = view.open("short.mp4"); !opened)
            return opened;
        return view.wait_for_event("media_status_changed", std::to_string(END_OF_MEDIA), first);
    }
    // The other component shows the same player.
    static bool is_released() { return true; }

    static void change(const Facade& facade) { facade.set_volume(0.5f); }
    static bool has_changed(HostVideoView& view) { return view->get_volume() == 0.5f; }

    static void follow(const Facade& facade, std::function<void()> callback)
    {
        facade.set_func_on_volume_changed([callback](float) { callback(); });
    }
    static void follow_no_more(const Facade& facade) { facade.set_func_on_volume_changed({}); }
    static void provoke(const Facade& facade) { facade.set_volume(facade.get_volume() / 2); }
};

template <>
struct Kind<HostCameraView> {
    using Facade = MCameraView;
    static constexpr const char* other_component[] = {"Debug", "Debug"};

    static testing::AssertionResult show(HostCameraView& view) { return view.show("usb"); }
    static bool is_released() { return running_cameras().empty(); }

    static void change(const Facade& facade)
    {
        facade.set_camera_hint("usb");
        facade.start();
    }
    static bool has_changed(HostCameraView& view) { return view->get_is_active(); }

    static void follow(const Facade& facade, std::function<void()> callback)
    {
        facade.set_camera_hint("usb");
        facade.set_func_active_changed(callback);
    }
    static void follow_no_more(const Facade& facade) { facade.set_func_active_changed({}); }
    static void provoke(const Facade& facade)
    {
        facade.get_is_active() ? facade.stop() : facade.start();
    }
};

template <>
struct Kind<HostScreenView> {
    using Facade = MScreenCaptureView;
    static constexpr const char* other_component[] = {"Scenes", "Quadrants"};

    static testing::AssertionResult show(HostScreenView& view)
    {
        const auto is_shown = [&] { return view.picture().pixel(256, 128).a == 255; };
        if (view.load() && view.draw_until(is_shown))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << "no screen is shown; see " << keep_picture(view.picture());
    }
    static bool is_released()
    {
        return wait_until([] { return capturing_threads() == 0; });
    }

    static void change(const Facade& facade) { facade.set_active(false); }
    static bool has_changed(HostScreenView& view)
    {
        return view.load() && shows_notice(view.picture());
    }
};

template <typename View>
class MediaViews : public testing::Test {
protected:
    void SetUp() override { plug_cameras({{.name = "USB Camera Pro"}}); }

    using Facade = typename Kind<View>::Facade;
    static_assert(sizeof(Facade) == sizeof(MView));
    static_assert(std::is_base_of_v<MQuickView, Facade>);
    static_assert(std::is_trivially_destructible_v<Facade>);
    static_assert(std::is_copy_constructible_v<Facade> && std::is_copy_assignable_v<Facade>);

    View view;
};

using AllViews = testing::Types<HostVideoView, HostCameraView, HostScreenView>;
TYPED_TEST_SUITE(MediaViews, AllViews);

TYPED_TEST(MediaViews, share_their_state_with_copies_of_the_facade)
{
    const auto copy = this->view.facade();
    Kind<TypeParam>::change(copy);
    EXPECT_TRUE(Kind<TypeParam>::has_changed(this->view));
}

TYPED_TEST(MediaViews, can_load_another_component_and_their_own_again)
{
    const auto [module, name] = Kind<TypeParam>::other_component;
    ASSERT_TRUE(Kind<TypeParam>::show(this->view));
    ASSERT_TRUE(this->view->load(module, name));
    EXPECT_TRUE(Kind<TypeParam>::is_released());
    EXPECT_TRUE(Kind<TypeParam>::show(this->view));
}

// --- Those with callbacks of their own -----------------------------------------------------------

template <typename View>
class ReportingViews : public MediaViews<View> {
};

using ViewsWithCallbacks = testing::Types<HostVideoView, HostCameraView>;
TYPED_TEST_SUITE(ReportingViews, ViewsWithCallbacks);

TYPED_TEST(ReportingViews, call_back_on_the_qt_thread)
{
    ASSERT_TRUE(Kind<TypeParam>::show(this->view));
    ASSERT_FALSE(this->view.events().empty());
    const std::thread::id qt_thread = this->view.events().front().thread;
    EXPECT_NE(qt_thread, std::this_thread::get_id());
    for (const ViewEvent& event : this->view.events())
        EXPECT_EQ(event.thread, qt_thread) << event;
}

TYPED_TEST(ReportingViews, release_a_callback_that_is_unregistered)
{
    const auto& facade = this->view.facade();
    const auto captured = std::make_shared<int>();
    std::atomic<int> calls = 0;
    Kind<TypeParam>::follow(facade, [&calls, captured] { ++calls; });
    Kind<TypeParam>::provoke(facade);
    EXPECT_EQ(calls, 1);
    Kind<TypeParam>::follow_no_more(facade);
    EXPECT_EQ(captured.use_count(), 1);
    Kind<TypeParam>::provoke(facade);
    EXPECT_EQ(calls, 1);
}

TYPED_TEST(ReportingViews, do_not_run_a_callback_once_its_setter_has_returned)
{
    std::atomic<bool> entered = false;
    std::atomic<bool> left = false;
    Kind<TypeParam>::follow(this->view.facade(), [&] {
        entered = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        left = true;
    });
    std::jthread caller([copy = this->view.facade()] { Kind<TypeParam>::provoke(copy); });
    ASSERT_TRUE(wait_until([&] { return entered.load(); }));
    Kind<TypeParam>::follow_no_more(this->view.facade());
    EXPECT_TRUE(left) << "the callback still runs after it was unregistered";
}

TYPED_TEST(ReportingViews, survive_a_callback_that_throws)
{
    expect_message_matching("mine \\(the call was aborted");
    Kind<TypeParam>::follow(this->view.facade(), [] { throw std::runtime_error("mine"); });
    Kind<TypeParam>::provoke(this->view.facade());
    Kind<TypeParam>::follow_no_more(this->view.facade());
    EXPECT_TRUE(Kind<TypeParam>::show(this->view));
}

}  // namespace

}  // namespace marlune::test
