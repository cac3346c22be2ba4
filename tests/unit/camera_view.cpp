// The view behind the facade of cameras, without a scene: the context of its component, the camera
// that a hint means, and its notifications to the host. The only cameras are those that a test
// plugs. media_views.cpp has the rules of all media views.

#include "media/camera_view.h"
#include "marlune/app.h"
#include "media/camera_hint.h"
#include "media/media_part.h"
#include "runtime/host_callback.h"
#include "support/fill_slot.h"
#include "support/media/callback_recorder.h"
#include "support/media/fake_camera.h"
#include "support/message_log.h"
#include "support/qt_loop.h"

#include <QMediaDevices>
#include <QPointer>
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

/** A choice without a warning. */
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

    void follow_all() { recorder.follow_all(view->callbacks()); }

    CallbackRecorder recorder;
    std::unique_ptr<CameraView> view;
};

}  // namespace

// --- Which camera a hint means -------------------------------------------------------------------

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

TEST(CameraHints, that_are_no_numbers_mean_a_part_of_the_name_regardless_of_case)
{
    for (const char* const hint :
         {"usb", "USB", "uSb", "2.0", "über", "ÜBER-CAM", "2.0 ü", "cam 7"})
        EXPECT_EQ(choose(hint, two_cameras), number(1)) << hint;
    EXPECT_EQ(choose("cam", two_cameras), number(0)) << "the first camera whose name contains it";
    EXPECT_EQ(choose(" ", two_cameras), number(0)) << "a space is also a part of its name";
}

TEST(CameraHints, that_are_numbers_never_mean_a_part_of_the_name)
{
    EXPECT_EQ(choose("7", two_cameras).index, 0);
    EXPECT_NE(choose("7", two_cameras).warning, u"");
}

TEST(CameraHints, that_exceed_all_numbers_are_names)
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

// --- Choosing one --------------------------------------------------------------------------------

TEST_F(CameraViews, begin_without_a_camera)
{
    EXPECT_EQ(view->camera(), nullptr);
    EXPECT_EQ(view->property("camera").value<QCamera*>(), nullptr);
    EXPECT_EQ(view->property("fill_mode"), 1u);
    EXPECT_EQ(view->camera_hint(), u"-1");
    EXPECT_TRUE(view->auto_play());
}

TEST_F(CameraViews, look_for_a_camera_in_a_later_turn_of_the_event_loop)
{
    follow_all();
    QSignalSpy hint_changed(view.get(), &CameraView::camera_hintChanged);
    view->set_camera_hint(QStringLiteral("usb"));
    EXPECT_EQ(view->camera_hint(), u"usb") << "the hint changes at once";
    EXPECT_EQ(hint_changed.count(), 1);
    EXPECT_EQ(recorder.take(), u"") << "the search waits for its turn, even on the Qt thread";
    serve_events();
    EXPECT_EQ(recorder.take(), u"error_occurred 1 no cameras found");
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

TEST_F(CameraViews, do_not_look_for_a_camera_during_a_callback)
{
    follow_all();
    QObject stand_in;
    const QScopedValueRollback<void*> context(MARLUNE_CTX, &stand_in);
    {
        const HostCallbackScope scope;
        view->set_camera_hint(QStringLiteral("0"));
        serve_events();
        EXPECT_EQ(recorder.take(), u"") << "it may be a callback of the current camera";
    }
    serve_events();
    EXPECT_EQ(recorder.take(), u"error_occurred 1 no cameras found");
}

TEST_F(CameraViews, keep_their_camera_when_no_other_can_be_chosen)
{
    view->install(QCameraDevice());
    QCamera* const camera = view->camera();
    QSignalSpy camera_changed(view.get(), &CameraView::cameraChanged);
    view->set_camera_hint(QStringLiteral("0"));
    serve_events();
    EXPECT_EQ(view->camera(), camera);
    EXPECT_EQ(camera_changed.count(), 0);
}

TEST_F(CameraViews, accept_hints_from_many_threads_while_they_read_them)
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

/** Has two cameras, Left and Right, until the next test. */
class TwoCameras : public CameraViews {
protected:
    void SetUp() override
    {
        CameraViews::SetUp();
        QMediaDevices::videoInputs();  // from now on Qt watches for cameras
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

TEST_F(TwoCameras, leave_a_replaced_camera_with_its_parent)
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

TEST_F(TwoCameras, release_a_former_camera_when_it_is_chosen_again)
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

TEST_F(CameraViews, report_a_camera_that_cannot_be_opened)
{
    follow_all();
    view->install(QCameraDevice());
    ASSERT_NE(view->camera()->errorString(), u"");
    EXPECT_EQ(
        recorder.take(),
        QStringLiteral("error_occurred 1 %1 error_changed").arg(view->camera()->errorString()));
}

TEST_F(CameraViews, work_without_a_camera)
{
    view->set_active(true);
    view->set_auto_play(true);
    QObject root;
    view->post_setup(nullptr, &root);
    view->before_reset();
    view->set_active(false);
    EXPECT_FALSE(view->camera());
}

TEST_F(CameraViews, remember_whether_they_play_automatically)
{
    view->set_auto_play(false);
    EXPECT_FALSE(view->auto_play());
    view->set_auto_play(true);
    EXPECT_TRUE(view->auto_play());
}

// --- Set-up and end of the scene -----------------------------------------------------------------

TEST_F(CameraViews, give_the_camera_to_the_scene_that_destroys_it)
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

TEST_F(CameraViews, survive_a_scene_that_destroys_their_camera)
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

// --- The callbacks -------------------------------------------------------------------------------

TEST_F(CameraViews, notify_the_host_before_the_scene)
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

}  // namespace marlune::test
