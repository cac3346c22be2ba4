// The view behind the facade of cameras, without a scene: what its component finds, which camera a hint
// means, and what the host is told of. There is no camera but those that a test plugs.

#include "media/camera_view.h"
#include "marlune/app.h"
#include "media/camera_hint.h"
#include "runtime/host_callback.h"
#include "runtime/media_part.h"
#include "support/fill_slot.h"
#include "support/media/fake_camera.h"
#include "support/message_log.h"
#include "support/qt_loop.h"
#include "support/told.h"

#include <QMediaDevices>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QScopedValueRollback>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace marlune {

/** For the messages of failed expectations. */
void PrintTo(const CameraChoice& choice, std::ostream* stream)
{
    *stream << choice.index << " \"" << choice.warning.toStdString() << '"';
}

}  // namespace marlune

namespace marlune::test {

namespace {

CameraChoice choose(const char* hint, const QStringList& descriptions)
{
    return choose_camera(QString::fromUtf8(hint), descriptions);
}

/** Without a word about it. */
CameraChoice number(qsizetype index)
{
    return {index, QString()};
}

const QStringList two_cameras{QStringLiteral("Integrated Camera"),
                              QStringLiteral("USB2.0 Über-Cam 7")};

class CameraViews : public testing::Test {
protected:
    void SetUp() override
    {
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
        have_application();
        view = std::make_unique<CameraView>();
    }

    void follow_all()
    {
        CameraCallbacks& callbacks = view->callbacks();
#define MARLUNE_FOLLOW(kind, name, parameters, signal, slot) told.follow(callbacks.name, #name);
        MARLUNE_CAMERA_CALLBACKS(MARLUNE_FOLLOW)
#undef MARLUNE_FOLLOW
    }

    Told told;
    std::unique_ptr<CameraView> view;
};

}  // namespace

// --- Which camera a hint means ---------------------------------------------------------------------

TEST(CameraHints, mean_the_first_camera_by_default)
{
    for (const char* const hint : {"", "-1", "0"})
        EXPECT_EQ(choose(hint, two_cameras), number(0)) << hint;
}

TEST(CameraHints, that_are_numbers_mean_a_place_in_the_list)
{
    EXPECT_EQ(choose("1", two_cameras), number(1));
    EXPECT_EQ(choose("01", two_cameras), number(1));
    EXPECT_EQ(choose("0x1", two_cameras).warning,
              u"Could not find camera by hint: 0x1, setting default");
    const QStringList three = two_cameras + QStringList{QStringLiteral("Third")};
    EXPECT_EQ(choose("2", three), number(2));
}

TEST(CameraHints, that_are_too_high_mean_the_first_camera_with_a_warning)
{
    EXPECT_EQ(choose("2", two_cameras),
              (CameraChoice{0,
                            QStringLiteral("Camera: wrong camera number supplied (index 2, "
                                           "available: 2), returning default primary screen")}));
    EXPECT_EQ(
        choose("2147483647", {QStringLiteral("Only")}),
        (CameraChoice{0,
                      QStringLiteral("Camera: wrong camera number supplied (index 2147483647, "
                                     "available: 1), returning default primary screen")}));
}

TEST(CameraHints, below_zero_mean_the_first_camera)
{
    for (const char* const hint : {"-2", "-100", "-2147483648"})
        EXPECT_EQ(choose(hint, two_cameras), number(0)) << hint;
}

TEST(CameraHints, that_are_no_numbers_mean_a_part_of_the_name_in_either_case)
{
    for (const char* const hint :
         {"usb", "USB", "uSb", "2.0", "über", "ÜBER-CAM", "2.0 ü", "cam 7"})
        EXPECT_EQ(choose(hint, two_cameras), number(1)) << hint;
    EXPECT_EQ(choose("cam", two_cameras), number(0)) << "the first of those that have it";
    EXPECT_EQ(choose(" ", two_cameras), number(0)) << "a part of its name too";
}

TEST(CameraHints, take_a_number_for_a_place_and_not_for_a_part_of_the_name)
{
    EXPECT_EQ(choose("7", two_cameras).index, 0);
    EXPECT_NE(choose("7", two_cameras).warning, u"");
}

TEST(CameraHints, beyond_all_numbers_are_names)
{
    EXPECT_EQ(choose("99999999999", two_cameras).warning,
              u"Could not find camera by hint: 99999999999, setting default");
    EXPECT_EQ(choose("99999999999", {QStringLiteral("A"), QStringLiteral("Nr. 99999999999")}),
              number(1));
}

TEST(CameraHints, that_no_name_contains_mean_the_first_camera_with_a_warning)
{
    EXPECT_EQ(choose("Ölkamera", two_cameras),
              (CameraChoice{
                  0, QStringLiteral("Could not find camera by hint: Ölkamera, setting default")}));
    EXPECT_EQ(
        choose("%1 %s", two_cameras),
        (CameraChoice{0, QStringLiteral("Could not find camera by hint: %1 %s, setting default")}));
}

TEST_F(CameraViews, begin_without_a_camera)
{
    EXPECT_EQ(view->camera(), nullptr);
    EXPECT_EQ(view->property("camera").value<QCamera*>(), nullptr);
    EXPECT_EQ(view->property("fill_mode"), 1u);
    EXPECT_EQ(view->camera_hint(), u"-1");
    EXPECT_TRUE(view->auto_play());
}

// --- Choosing one ----------------------------------------------------------------------------------

TEST_F(CameraViews, look_for_a_camera_when_their_turn_comes)
{
    follow_all();
    QSignalSpy hint_changed(view.get(), &CameraView::camera_hintChanged);
    view->set_camera_hint(QStringLiteral("usb"));
    EXPECT_EQ(view->camera_hint(), u"usb") << "at once";
    EXPECT_EQ(hint_changed.count(), 1);
    EXPECT_EQ(told.take(), u"") << "not before its turn, not even on the Qt thread";
    serve_events();
    EXPECT_EQ(told.take(), u"error_occurred 1 no cameras found");
    EXPECT_EQ(view->camera(), nullptr);
}

TEST_F(CameraViews, look_for_a_camera_on_the_qt_thread)
{
    std::thread::id told_on;
    fill(view->callbacks().error_occurred,
         [&](int, const std::string&) { told_on = std::this_thread::get_id(); });
    std::thread host([&] { view->set_camera_hint(QStringLiteral("0")); });
    host.join();
    EXPECT_EQ(told_on, std::thread::id());
    serve_events();
    EXPECT_EQ(told_on, std::this_thread::get_id());
}

TEST_F(CameraViews, do_not_look_for_a_camera_under_a_callback)
{
    follow_all();
    QObject stand_in;
    const QScopedValueRollback<void*> context(MARLUNE_CTX, &stand_in);
    {
        const HostCallbackScope scope;
        view->set_camera_hint(QStringLiteral("0"));
        serve_events();
        EXPECT_EQ(told.take(), u"") << "it may be one of the camera that there is";
    }
    serve_events();
    EXPECT_EQ(told.take(), u"error_occurred 1 no cameras found");
}

TEST_F(CameraViews, keep_the_camera_they_have_when_there_is_none_to_choose)
{
    view->install(QCameraDevice());
    QCamera* const camera = view->camera();
    QSignalSpy camera_changed(view.get(), &CameraView::cameraChanged);
    view->set_camera_hint(QStringLiteral("0"));
    serve_events();
    EXPECT_EQ(view->camera(), camera);
    EXPECT_EQ(camera_changed.count(), 0);
}

TEST_F(CameraViews, take_hints_from_many_threads_while_they_read_them)
{
    std::vector<std::thread> hosts;
    const QString hints[] = {QStringLiteral("one"), QStringLiteral("another")};
    for (const QString& hint : hints) {
        hosts.emplace_back([this, &hint] {
            for (int i = 0; i < 1000; ++i)
                view->set_camera_hint(hint);
        });
    }
    bool whole = true;
    for (int i = 0; i < 1000; ++i) {
        const QString hint = view->camera_hint();
        whole = whole && (hint == u"-1" || hint == hints[0] || hint == hints[1]);
    }
    for (std::thread& host : hosts)
        host.join();
    EXPECT_TRUE(whole);
    QCoreApplication::removePostedEvents(view.get());
}

TEST_F(CameraViews, own_the_camera_they_install_and_leave_it_off)
{
    QSignalSpy camera_changed(view.get(), &CameraView::cameraChanged);
    view->install(QCameraDevice());
    ASSERT_TRUE(view->camera());
    EXPECT_EQ(view->camera()->parent(), view.get());
    EXPECT_FALSE(view->camera()->isActive());
    EXPECT_EQ(camera_changed.count(), 1);
}

/** Left and Right, until the next test. */
class TwoCameras : public CameraViews {
protected:
    void SetUp() override
    {
        CameraViews::SetUp();
        QMediaDevices::videoInputs();  // from here on Qt follows what is plugged
        serve_while([] { plug_cameras({{.name = "Left"}, {.name = "Right"}}); });
        devices = QMediaDevices::videoInputs();
        ASSERT_EQ(devices.size(), 2);
    }
    void TearDown() override
    {
        view.reset();
        serve_while([] { plug_cameras({}); });
        CameraViews::TearDown();
    }

    QList<QCameraDevice> devices;
};

TEST_F(TwoCameras, leave_one_that_another_one_replaces_with_its_parent)
{
    auto root = std::make_unique<QObject>();
    view->install(devices[0]);
    view->post_setup(nullptr, root.get());
    const QPointer old = view->camera();
    old->setActive(true);
    std::vector<QCamera*> changes;
    QObject::connect(view.get(), &CameraView::cameraChanged,
                     [&] { changes.push_back(view->camera()); });

    view->install(devices[1]);
    EXPECT_EQ(changes, (std::vector<QCamera*>{nullptr, view->camera()}));
    EXPECT_EQ(view->camera()->cameraDevice(), devices[1]);
    EXPECT_EQ(view->camera()->parent(), view.get());
    ASSERT_TRUE(old);
    EXPECT_FALSE(old->isActive());
    EXPECT_EQ(old->parent(), root.get());
    root.reset();
    EXPECT_FALSE(old);
}

TEST_F(TwoCameras, set_a_former_one_free_when_it_is_chosen_again)
{
    CameraView other;
    for (const QCameraDevice& device : devices) {
        view->install(device);
        view->set_active(true);
        ASSERT_EQ(view->camera()->error(), QCamera::NoError);
    }
    const QPointer left = view->findChild<QCamera*>();
    ASSERT_EQ(left->cameraDevice(), devices[0]);
    other.install(devices[0]);
    EXPECT_FALSE(left);
    other.set_active(true);
    EXPECT_EQ(other.camera()->error(), QCamera::NoError) << "in another view";

    const QPointer right = view->camera();
    view->install(devices[1]);
    EXPECT_FALSE(right);
    view->set_active(true);
    EXPECT_EQ(view->camera()->error(), QCamera::NoError) << "in the same view";
}

TEST_F(CameraViews, tell_of_a_camera_that_cannot_be_opened)
{
    follow_all();
    view->install(QCameraDevice());
    ASSERT_NE(view->camera()->errorString(), u"");
    EXPECT_EQ(
        told.take(),
        QStringLiteral("error_occurred 1 %1 error_changed").arg(view->camera()->errorString()));
}

TEST_F(CameraViews, do_without_a_camera)
{
    view->set_active(true);
    view->set_auto_play(true);
    QObject root;
    view->post_setup(nullptr, &root);
    view->before_reset();
    view->set_active(false);
    EXPECT_FALSE(view->camera());
}

TEST_F(CameraViews, remember_whether_they_play_by_themselves)
{
    view->set_auto_play(false);
    EXPECT_FALSE(view->auto_play());
    view->set_auto_play(true);
    EXPECT_TRUE(view->auto_play());
}

TEST_F(CameraViews, take_fill_modes_that_there_are_and_tell_of_each)
{
    QSignalSpy spy(view.get(), &CameraView::fill_modeChanged);
    const std::pair<uint, uint> modes[] = {
        {2, 2}, {2, 2}, {3, 0}, {1, 1}, {7, 0}, {0, 0}, {uint(-1), uint(-1)}, {uint(-2), 0}};
    int told_of = 0;
    for (const auto& [given, stored] : modes) {
        view->set_fill_mode(given);
        EXPECT_EQ(view->fill_mode(), stored) << given;
        EXPECT_EQ(spy.count(), ++told_of) << given;
    }
}

// --- Set-up and end of the scene -------------------------------------------------------------------

TEST_F(CameraViews, are_the_context_of_their_scene_and_a_type_that_cannot_be_made)
{
    QQmlEngine engine;
    view->prepare_context(engine.rootContext());
    view->prepare_context(engine.rootContext());
    EXPECT_EQ(engine.rootContext()->contextProperty("ctx").value<QObject*>(), view.get());
    QQmlComponent component(&engine);
    component.setData("import Custom 1.0\nCameraView {}", QUrl());
    ASSERT_TRUE(component.isError());
    EXPECT_EQ(component.errors().first().description(), u"Don't try to add to a qml definition");
    serve_events();
}

TEST_F(CameraViews, give_the_camera_to_the_scene_with_which_it_goes)
{
    auto root = std::make_unique<QObject>();
    view->install(QCameraDevice());
    const QPointer camera = view->camera();
    view->post_setup(nullptr, root.get());
    EXPECT_EQ(camera->parent(), root.get());
    view->before_reset();
    root.reset();
    EXPECT_FALSE(camera);
    EXPECT_EQ(view->camera(), nullptr);
}

TEST_F(CameraViews, survive_a_scene_that_takes_their_camera_along)
{
    auto root = std::make_unique<QObject>();
    view->install(QCameraDevice());
    view->post_setup(nullptr, root.get());
    root.reset();
    EXPECT_EQ(view->camera(), nullptr);
    EXPECT_EQ(view->property("camera").value<QCamera*>(), nullptr);
    view->before_reset();
    view->install(QCameraDevice());
    EXPECT_TRUE(view->camera());
}

TEST_F(CameraViews, end_their_camera_with_themselves)
{
    view->install(QCameraDevice());
    const QPointer camera = view->camera();
    view.reset();
    EXPECT_FALSE(camera);
}

TEST_F(CameraViews, end_all_cameras_when_the_library_stops)
{
    CameraView other;
    other.install(QCameraDevice());
    view->install(QCameraDevice());
    media_part::close_players();
    EXPECT_FALSE(view->camera() || other.camera());
}

// --- The callbacks ---------------------------------------------------------------------------------

TEST_F(CameraViews, tell_the_host_of_each_signal)
{
    view->install(QCameraDevice());
    follow_all();
    QCamera& camera = *view->camera();
    emit camera.activeChanged(true);
    EXPECT_EQ(told.take(), u"active_changed");
    emit camera.cameraDeviceChanged();
    EXPECT_EQ(told.take(), u"camera_device_changed");
    emit camera.cameraFormatChanged();
    EXPECT_EQ(told.take(), u"camera_format_changed");
    emit camera.colorTemperatureChanged();
    EXPECT_EQ(told.take(), u"color_temperature_changed");
    emit camera.customFocusPointChanged();
    EXPECT_EQ(told.take(), u"custom_focus_point_changed");
    emit camera.errorChanged();
    EXPECT_EQ(told.take(), u"error_changed");
    emit camera.errorOccurred(QCamera::CameraError, QStringLiteral("Nein, ölig"));
    EXPECT_EQ(told.take(), u"error_occurred 1 Nein, ölig");
    emit camera.exposureCompensationChanged(-0.5f);
    EXPECT_EQ(told.take(), u"exposure_compensation_changed -0.5");
    emit camera.exposureModeChanged();
    EXPECT_EQ(told.take(), u"exposure_mode_changed");
    emit camera.exposureTimeChanged(0.25f);
    EXPECT_EQ(told.take(), u"exposure_time_changed 0.25");
    emit camera.flashModeChanged();
    EXPECT_EQ(told.take(), u"flash_mode_changed");
    emit camera.flashReady(true);
    EXPECT_EQ(told.take(), u"flash_ready true");
    emit camera.focusDistanceChanged(0.5f);
    EXPECT_EQ(told.take(), u"focus_distance_changed");
    emit camera.focusModeChanged();
    EXPECT_EQ(told.take(), u"focus_mode_changed");
    emit camera.focusPointChanged();
    EXPECT_EQ(told.take(), u"focus_point_changed");
    emit camera.isoSensitivityChanged(400);
    EXPECT_EQ(told.take(), u"iso_sensitivity_changed 400");
    emit camera.manualExposureTimeChanged(0.125f);
    EXPECT_EQ(told.take(), u"manual_exposure_time_changed 0.125");
    emit camera.manualIsoSensitivityChanged(200);
    EXPECT_EQ(told.take(), u"manual_iso_sensitivity_changed");
    emit camera.maximumZoomFactorChanged(4);
    EXPECT_EQ(told.take(), u"maximum_zoom_factor_changed");
    emit camera.minimumZoomFactorChanged(1);
    EXPECT_EQ(told.take(), u"minimum_zoom_factor_changed");
    emit camera.supportedFeaturesChanged();
    EXPECT_EQ(told.take(), u"supported_features_changed");
    emit camera.torchModeChanged();
    EXPECT_EQ(told.take(), u"torch_mode_changed");
    emit camera.whiteBalanceModeChanged();
    EXPECT_EQ(told.take(), u"white_balance_mode_changed");
    emit camera.zoomFactorChanged(2);
    EXPECT_EQ(told.take(), u"zoom_factor_changed");
}

TEST_F(CameraViews, tell_the_host_before_the_scene)
{
    std::vector<std::string> order;
    QObject::connect(view.get(), &CameraView::cameraChanged, [&] {
        if (view->camera())
            QObject::connect(view->camera(), &QCamera::activeChanged,
                             [&] { order.push_back("scene"); });
    });
    view->install(QCameraDevice());
    fill(view->callbacks().active_changed, [&] { order.push_back("host"); });
    emit view->camera()->activeChanged(true);
    EXPECT_EQ(order, (std::vector<std::string>{"host", "scene"}));
}

TEST_F(CameraViews, do_without_callbacks)
{
    view->install(QCameraDevice());
    const QPointer camera = view->camera();
    emit camera->errorOccurred(QCamera::CameraError, QString());
    emit camera->flashReady(true);
    EXPECT_EQ(view->camera(), camera) << "it goes on as it was";
}

}  // namespace marlune::test
