// Hosts call a camera inside its own callbacks: every member in every callback.

#include "support/callback_sweep.h"
#include "support/media/host_camera_view.h"
#include "support/message_log.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using Camera = MCameraView;

std::vector<Member<Camera>> members()
{
    return with_others<Camera>(
        {
            {"start", [](Camera& view) { view.start(); }},
            {"stop", [](Camera& view) { view.stop(); }},
            {"set_active", [](Camera& view) { view.set_active(false); }},
            {"set_auto_play", [](Camera& view) { view.set_auto_play(true); }},
            {"set_camera_hint", [](Camera& view) { view.set_camera_hint("plain"); }},
            {"set_same_camera_hint", [](Camera& view) { view.set_camera_hint("able"); }},
            {"reset", [](Camera& view) { view.reset(); }},
            {"destroy", [](Camera& view) { view.destroy(); }},
            {"render", [](Camera& view) { view.render(); }},
        },
        [](Camera& view) {
            CameraGetters::call(view);
            view.is_exposure_mode_supported(1);
            view.is_flash_mode_supported(1);
            view.is_torch_mode_supported(1);
            view.is_focus_mode_supported(5);
            view.is_white_balance_mode_supported(1);
            view.set_fill_mode(2);
            view.set_exposure_mode(1);
            view.set_exposure_compensation(0.5f);
            view.set_manual_exposure_time(0.02f);
            view.set_auto_exposure_time();
            view.set_manual_iso_sensitivity(200);
            view.set_auto_iso_sensitivity();
            view.set_flash_mode(1);
            view.set_torch_mode(1);
            view.set_focus_mode(5);
            view.set_focus_distance(0.5f);
            view.set_custom_focus_point({0.5f, 0.5f});
            view.set_white_balance_mode(1);
            view.set_color_temperature(4000);
            view.set_zoom_factor(1.1f);
            view.zoom_to(1.2f, 0);
        });
}

/** The callbacks that the tests' cameras cause. */
constexpr Occasion<HostCameraView> OCCASIONS[] = {
    {"active_changed", [](HostCameraView& view) { view->start(); }},
    {"zoom_factor_changed", [](HostCameraView& view) { view->set_zoom_factor(2); }},
    {"exposure_mode_changed", [](HostCameraView& view) { view->set_exposure_mode(1); }},
    {"exposure_time_changed",
     [](HostCameraView& view) {
         view->set_exposure_mode(1);
         view->set_manual_exposure_time(0.1f);
     }},
    {"focus_mode_changed", [](HostCameraView& view) { view->set_focus_mode(5); }},
    {"white_balance_mode_changed", [](HostCameraView& view) { view->set_white_balance_mode(1); }},
    {"color_temperature_changed", [](HostCameraView& view) { view->set_color_temperature(5000); }},
    {"error_occurred", [](HostCameraView& view) { view->set_camera_hint("locked"); }},
    {"error_changed", [](HostCameraView& view) { view->set_camera_hint("locked"); }},
};

void call_in_callbacks(std::shared_ptr<CallerInCallback<Camera>> caller, const Camera& view)
{
#define MARLUNE_CALL(kind, name, parameters, signal, slot) \
    view.set_func_##name([caller](const auto&...) { caller->on(#name); });
    MARLUNE_CAMERA_CALLBACKS(MARLUNE_CALL)
#undef MARLUNE_CALL
}

class CallsInCameraCallbacks : public testing::TestWithParam<Member<Camera>> {
protected:
    void SetUp() override
    {
        allow_messages_matching("Unable to open the camera .*Permission denied");
        plug_cameras({{.name = "Able"},
                      {.name = "Plain", .has_controls = false},
                      {.name = "Locked", .is_locked = true}});
    }
};

INSTANTIATE_TEST_SUITE_P(Members, CallsInCameraCallbacks, testing::ValuesIn(members()),
                         name_of<Camera>);

TEST_P(CallsInCameraCallbacks, leave_a_camera_that_can_be_opened_again)
{
    for (const auto& [callback, provoke] : OCCASIONS) {
        SCOPED_TRACE(std::string(GetParam().name) + " in " + callback);
        {
            HostCameraView view;
            view->set_camera_hint("able");
            const auto caller =
                std::make_shared<CallerInCallback<Camera>>(view.facade(), callback, GetParam());
            call_in_callbacks(caller, view.facade());
            provoke(view);
            ASSERT_TRUE(wait_until([&] { return caller->has_called(); }));
            view->set_camera_hint("able");
            view->stop();
        }
        EXPECT_TRUE(wait_until([] { return open_cameras().empty(); }));
    }
}

}  // namespace

}  // namespace marlune::test
