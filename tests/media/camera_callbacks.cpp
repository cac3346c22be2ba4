// Hosts that call a camera from within its own callbacks: every member in every callback.

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

std::vector<MemberGroup<Camera>> member_groups()
{
    return groups_of<Camera>(
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
        {
            {"get_is_active", [](Camera& view) { view.get_is_active(); }},
            {"is_available", [](Camera& view) { view.is_available(); }},
            {"get_fill_mode", [](Camera& view) { view.get_fill_mode(); }},
            {"get_error", [](Camera& view) { view.get_error(); }},
            {"get_error_string", [](Camera& view) { view.get_error_string(); }},
            {"get_exposure_mode", [](Camera& view) { view.get_exposure_mode(); }},
            {"is_exposure_mode_supported",
             [](Camera& view) { view.is_exposure_mode_supported(1); }},
            {"get_exposure_compensation", [](Camera& view) { view.get_exposure_compensation(); }},
            {"get_exposure_time", [](Camera& view) { view.get_exposure_time(); }},
            {"get_manual_exposure_time", [](Camera& view) { view.get_manual_exposure_time(); }},
            {"minimum_exposure_time", [](Camera& view) { view.minimum_exposure_time(); }},
            {"maximum_exposure_time", [](Camera& view) { view.maximum_exposure_time(); }},
            {"get_iso_sensitivity", [](Camera& view) { view.get_iso_sensitivity(); }},
            {"get_manual_iso_sensitivity", [](Camera& view) { view.get_manual_iso_sensitivity(); }},
            {"minimum_iso_sensitivity", [](Camera& view) { view.minimum_iso_sensitivity(); }},
            {"maximum_iso_sensitivity", [](Camera& view) { view.maximum_iso_sensitivity(); }},
            {"get_flash_mode", [](Camera& view) { view.get_flash_mode(); }},
            {"is_flash_mode_supported", [](Camera& view) { view.is_flash_mode_supported(1); }},
            {"get_is_flash_ready", [](Camera& view) { view.get_is_flash_ready(); }},
            {"get_torch_mode", [](Camera& view) { view.get_torch_mode(); }},
            {"is_torch_mode_supported", [](Camera& view) { view.is_torch_mode_supported(1); }},
            {"get_focus_mode", [](Camera& view) { view.get_focus_mode(); }},
            {"is_focus_mode_supported", [](Camera& view) { view.is_focus_mode_supported(5); }},
            {"get_focus_distance", [](Camera& view) { view.get_focus_distance(); }},
            {"get_focus_point", [](Camera& view) { view.get_focus_point(); }},
            {"get_custom_focus_point", [](Camera& view) { view.get_custom_focus_point(); }},
            {"get_white_balance_mode", [](Camera& view) { view.get_white_balance_mode(); }},
            {"is_white_balance_mode_supported",
             [](Camera& view) { view.is_white_balance_mode_supported(1); }},
            {"get_color_temperature", [](Camera& view) { view.get_color_temperature(); }},
            {"get_zoom_factor", [](Camera& view) { view.get_zoom_factor(); }},
            {"get_minimum_zoom_factor", [](Camera& view) { view.get_minimum_zoom_factor(); }},
            {"get_maximum_zoom_factor", [](Camera& view) { view.get_maximum_zoom_factor(); }},
            {"set_fill_mode", [](Camera& view) { view.set_fill_mode(2); }},
            {"set_exposure_mode", [](Camera& view) { view.set_exposure_mode(1); }},
            {"set_exposure_compensation",
             [](Camera& view) { view.set_exposure_compensation(0.5f); }},
            {"set_manual_exposure_time",
             [](Camera& view) { view.set_manual_exposure_time(0.02f); }},
            {"set_auto_exposure_time", [](Camera& view) { view.set_auto_exposure_time(); }},
            {"set_manual_iso_sensitivity",
             [](Camera& view) { view.set_manual_iso_sensitivity(200); }},
            {"set_auto_iso_sensitivity", [](Camera& view) { view.set_auto_iso_sensitivity(); }},
            {"set_flash_mode", [](Camera& view) { view.set_flash_mode(1); }},
            {"set_torch_mode", [](Camera& view) { view.set_torch_mode(1); }},
            {"set_focus_mode", [](Camera& view) { view.set_focus_mode(5); }},
            {"set_focus_distance", [](Camera& view) { view.set_focus_distance(0.5f); }},
            {"set_custom_focus_point",
             [](Camera& view) {
                 view.set_custom_focus_point({0.5f, 0.5f});
             }},
            {"set_white_balance_mode", [](Camera& view) { view.set_white_balance_mode(1); }},
            {"set_color_temperature", [](Camera& view) { view.set_color_temperature(4000); }},
            {"set_zoom_factor", [](Camera& view) { view.set_zoom_factor(1.1f); }},
            {"zoom_to", [](Camera& view) { view.zoom_to(1.2f, 0); }},
        });
}

/** For the callbacks that the tests' cameras give rise to. */
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

class CallsInCameraCallbacks : public testing::TestWithParam<MemberGroup<Camera>> {
protected:
    void SetUp() override
    {
        allow_messages_matching("Unable to open the camera .*Permission denied");
        plug_cameras({{.name = "Able"},
                      {.name = "Plain", .has_controls = false},
                      {.name = "Locked", .is_locked = true}});
    }
};

INSTANTIATE_TEST_SUITE_P(Members, CallsInCameraCallbacks, testing::ValuesIn(member_groups()),
                         name_of<Camera>);

TEST_P(CallsInCameraCallbacks, leave_a_camera_that_can_be_had)
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
