// The rules that the views behind the facades of video players, cameras and screens share, without
// a scene. The rules of only one of them are in the file named after it.

#include "media/camera_view.h"
#include "media/media_part.h"
#include "media/screen_capture_view.h"
#include "media/video_view.h"
#include "support/media/callback_recorder.h"
#include "support/qt_loop.h"

#include <QGuiApplication>
#include <QMetaProperty>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

/** A signal of Qt Multimedia, and the calls of the host's callbacks that follow it. */
struct Report {
    std::function<void()> emit_signal;
    const char16_t* call;
};

/** Values that differ from the defaults of a view, by property. */
using Values = std::vector<std::pair<const char*, QVariant>>;

/** The differences between the kinds of view. */
template <typename View>
struct Kind;

template <>
struct Kind<VideoView> {
    static constexpr auto refusal = u"Don't try to add to a qml definition";

    static Values other_values()
    {
        return {
            {"path_or_url", QStringLiteral("x")},
            {"path_or_url_humanized", QStringLiteral("x")},
            {"fill_mode", 7u},
            {"ui_controls_source_humanized", false},
            {"playing_position", qint64(5)},
            {"playing_position_str", QStringLiteral("x")},
            {"playing_minus_position_str", QStringLiteral("x")},
            {"playing_position_pct", 2.5},
            {"duration", qint64(5)},
            {"countSubtitleTracks", 3},
            {"countAudioTracks", 3},
            {"countVideoTracks", 3},
            {"controls_enabled", false},
            {"controls_auto_hide", true},
            {"player", QVariant::fromValue<QMediaPlayer*>(nullptr)},
            {"audioOutput", QVariant::fromValue<QAudioOutput*>(nullptr)},
        };
    }

    static void have_device(VideoView&) {}

    static std::vector<QPointer<QObject>> devices(const VideoView& view)
    {
        return {view.player(), view.audio_output()};
    }

    static std::vector<Report> reports(const VideoView& view)
    {
        QMediaPlayer* const player = view.player();
        QAudioOutput* const output = view.audio_output();
        return {
            {[=] { emit player->activeTracksChanged(); }, u"active_tracks_changed"},
            {[=] { emit player->audioBufferOutputChanged(); }, u"audio_buffer_output_changed"},
            {[=] { emit player->audioOutputChanged(); }, u"audio_output_changed"},
            {[=] { emit player->bufferProgressChanged(0.5f); }, u"buffer_progress_changed 0.5"},
            {[=] { emit player->durationChanged(9007199254740993); },
             u"duration_changed 9007199254740993"},
            {[=] { emit player->errorChanged(); }, u"error_changed"},
            {[=] {
                 emit player->errorOccurred(QMediaPlayer::AccessDeniedError,
                                            QStringLiteral("Nein, ölig"));
             },
             u"error_occurred 4 Nein, ölig"},
            {[=] { emit player->hasAudioChanged(true); }, u"has_audio_changed true"},
            {[=] { emit player->hasVideoChanged(false); }, u"has_video_changed false"},
            {[=] { emit player->loopsChanged(); }, u"loops_changed"},
            {[=] { emit player->mediaStatusChanged(QMediaPlayer::InvalidMedia); },
             u"media_status_changed 7"},
            {[=] { emit player->metaDataChanged(); }, u"metadata_changed"},
            {[=] { emit output->mutedChanged(true); }, u"muted_changed true"},
            {[=] { emit player->playbackRateChanged(1.25); }, u"playback_rate_changed 1.25"},
            {[=] { emit player->playbackStateChanged(QMediaPlayer::PausedState); },
             u"playback_state_changed 2"},
            {[=] { emit player->playingChanged(true); }, u"playing_changed true"},
            {[=] { emit player->positionChanged(-1); }, u"position_changed -1"},
            {[=] { emit player->seekableChanged(true); }, u"seekable_changed true"},
            {[=] { emit player->sourceChanged(QUrl(QStringLiteral("http://example.invalid/ä"))); },
             u"source_changed http://example.invalid/ä"},
            {[=] { emit player->tracksChanged(); }, u"tracks_changed"},
            {[=] { emit player->videoOutputChanged(); }, u"video_output_changed"},
            {[=] { emit output->volumeChanged(0.75f); }, u"volume_changed 0.75"},
        };
    }
};

template <>
struct Kind<CameraView> {
    static constexpr auto refusal = u"Don't try to add to a qml definition";

    static void have_device(CameraView& view) { view.install(QCameraDevice()); }

    static std::vector<QPointer<QObject>> devices(const CameraView& view)
    {
        return {view.camera()};
    }

    static std::vector<Report> reports(const CameraView& view)
    {
        QCamera* const camera = view.camera();
        return {
            {[=] { emit camera->activeChanged(true); }, u"active_changed"},
            {[=] { emit camera->cameraDeviceChanged(); }, u"camera_device_changed"},
            {[=] { emit camera->cameraFormatChanged(); }, u"camera_format_changed"},
            {[=] { emit camera->colorTemperatureChanged(); }, u"color_temperature_changed"},
            {[=] { emit camera->customFocusPointChanged(); }, u"custom_focus_point_changed"},
            {[=] { emit camera->errorChanged(); }, u"error_changed"},
            {[=] {
                 emit camera->errorOccurred(QCamera::CameraError, QStringLiteral("Nein, ölig"));
             },
             u"error_occurred 1 Nein, ölig"},
            {[=] { emit camera->exposureCompensationChanged(-0.5f); },
             u"exposure_compensation_changed -0.5"},
            {[=] { emit camera->exposureModeChanged(); }, u"exposure_mode_changed"},
            {[=] { emit camera->exposureTimeChanged(0.25f); }, u"exposure_time_changed 0.25"},
            {[=] { emit camera->flashModeChanged(); }, u"flash_mode_changed"},
            {[=] { emit camera->flashReady(true); }, u"flash_ready true"},
            {[=] { emit camera->focusDistanceChanged(0.5f); }, u"focus_distance_changed"},
            {[=] { emit camera->focusModeChanged(); }, u"focus_mode_changed"},
            {[=] { emit camera->focusPointChanged(); }, u"focus_point_changed"},
            {[=] { emit camera->isoSensitivityChanged(400); }, u"iso_sensitivity_changed 400"},
            {[=] { emit camera->manualExposureTimeChanged(0.125f); },
             u"manual_exposure_time_changed 0.125"},
            {[=] { emit camera->manualIsoSensitivityChanged(200); },
             u"manual_iso_sensitivity_changed"},
            {[=] { emit camera->maximumZoomFactorChanged(4); }, u"maximum_zoom_factor_changed"},
            {[=] { emit camera->minimumZoomFactorChanged(1); }, u"minimum_zoom_factor_changed"},
            {[=] { emit camera->supportedFeaturesChanged(); }, u"supported_features_changed"},
            {[=] { emit camera->torchModeChanged(); }, u"torch_mode_changed"},
            {[=] { emit camera->whiteBalanceModeChanged(); }, u"white_balance_mode_changed"},
            {[=] { emit camera->zoomFactorChanged(2); }, u"zoom_factor_changed"},
        };
    }
};

template <>
struct Kind<ScreenCaptureView> {
    static constexpr auto refusal = u"ScreenCaptureView is not a type";

    static Values other_values()
    {
        return {{"active", 0u}, {"physical_screen_hint", QStringLiteral("2")}};
    }
};

template <typename View>
class ViewsOf : public testing::Test {
protected:
    void SetUp() override
    {
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
        have_application<QGuiApplication>();
        view = std::make_unique<View>();
    }

    std::unique_ptr<View> view;
};

}  // namespace

// --- All media views -----------------------------------------------------------------------------

template <typename View>
using MediaViews = ViewsOf<View>;

using AllViews = testing::Types<VideoView, CameraView, ScreenCaptureView>;
TYPED_TEST_SUITE(MediaViews, AllViews);

TYPED_TEST(MediaViews, are_the_context_of_their_scene)
{
    QQmlEngine engine;
    this->view->prepare_context(engine.rootContext());
    this->view->prepare_context(engine.rootContext());
    EXPECT_EQ(engine.rootContext()->contextProperty("ctx").template value<QObject*>(),
              this->view.get());
    serve_events();
}

TYPED_TEST(MediaViews, cannot_be_created_by_a_scene)
{
    QQmlEngine engine;
    this->view->prepare_context(engine.rootContext());
    const QByteArray name = QByteArray(TypeParam::staticMetaObject.className()).sliced(9);
    QQmlComponent component(&engine);
    component.setData("import Custom 1.0\n" + name + " {}", QUrl());
    ASSERT_TRUE(component.isError());
    EXPECT_EQ(component.errors().first().description(), Kind<TypeParam>::refusal);
    serve_events();
}

// --- Those whose properties the scene writes -----------------------------------------------------

template <typename View>
using WritableViews = ViewsOf<View>;

using ViewsThatScenesWrite = testing::Types<VideoView, ScreenCaptureView>;
TYPED_TEST_SUITE(WritableViews, ViewsThatScenesWrite);

TYPED_TEST(WritableViews, notify_about_a_written_property_only_when_it_differs)
{
    const QMetaObject& meta = TypeParam::staticMetaObject;
    const Values values = Kind<TypeParam>::other_values();
    ASSERT_EQ(values.size(), size_t(meta.propertyCount() - meta.propertyOffset()));
    for (const auto& [name, value] : values) {
        const QMetaProperty property = meta.property(meta.indexOfProperty(name));
        QSignalSpy spy(this->view.get(), property.notifySignal());
        EXPECT_TRUE(this->view->setProperty(name, this->view->property(name))) << name;
        EXPECT_EQ(spy.count(), 0) << name << " as it is";
        EXPECT_TRUE(this->view->setProperty(name, value)) << name;
        EXPECT_EQ(this->view->property(name), value) << name << " is stored as it is";
        EXPECT_EQ(spy.count(), 1) << name;
        EXPECT_TRUE(this->view->setProperty(name, value)) << name;
        EXPECT_EQ(spy.count(), 1) << name << " again";
    }
}

// --- Those with a player or a camera -------------------------------------------------------------

template <typename View>
class DeviceViews : public ViewsOf<View> {
protected:
    void SetUp() override
    {
        ViewsOf<View>::SetUp();
        Kind<View>::have_device(*this->view);
        ASSERT_FALSE(this->has_lost_devices());
    }

    bool has_lost_devices() const
    {
        const auto devices = Kind<View>::devices(*this->view);
        return std::ranges::all_of(devices, [](const auto& device) { return !device; });
    }
};

using ViewsWithDevices = testing::Types<VideoView, CameraView>;
TYPED_TEST_SUITE(DeviceViews, ViewsWithDevices);

TYPED_TEST(DeviceViews, accept_known_fill_modes_and_notify_about_each)
{
    QSignalSpy spy(this->view.get(), &TypeParam::fill_modeChanged);
    const std::pair<uint, uint> modes[] = {
        {2, 2},        {2, 2},   {3, 0}, {1, 1}, {7, 0}, {0, 0}, {uint(-1), uint(-1)},
        {uint(-2), 0}, {1000, 0}};
    int signals_seen = 0;
    for (const auto& [given, stored] : modes) {
        this->view->set_fill_mode(given);
        EXPECT_EQ(this->view->fill_mode(), stored) << given;
        EXPECT_EQ(spy.count(), ++signals_seen) << given;
    }
}

TYPED_TEST(DeviceViews, destroy_their_devices_with_themselves)
{
    const auto devices = Kind<TypeParam>::devices(*this->view);
    this->view.reset();
    for (const auto& device : devices)
        EXPECT_FALSE(device);
}

TYPED_TEST(DeviceViews, destroy_all_devices_when_the_library_stops)
{
    TypeParam other;
    Kind<TypeParam>::have_device(other);
    auto devices = Kind<TypeParam>::devices(*this->view);
    for (const auto& device : Kind<TypeParam>::devices(other))
        devices.push_back(device);
    media_part::close_players();
    for (const auto& device : devices)
        EXPECT_FALSE(device);
    EXPECT_TRUE(this->has_lost_devices());
}

TYPED_TEST(DeviceViews, report_each_signal_to_the_host)
{
    CallbackRecorder recorder;
    recorder.follow_all(this->view->callbacks());
    const std::vector<Report> reports = Kind<TypeParam>::reports(*this->view);
    EXPECT_EQ(int(reports.size()), recorder.count());
    for (const Report& report : reports) {
        report.emit_signal();
        EXPECT_EQ(recorder.take(), report.call);
    }
}

TYPED_TEST(DeviceViews, work_without_callbacks)
{
    const auto devices = Kind<TypeParam>::devices(*this->view);
    for (const Report& report : Kind<TypeParam>::reports(*this->view))
        report.emit_signal();
    EXPECT_EQ(Kind<TypeParam>::devices(*this->view), devices) << "the devices still work";
}

}  // namespace marlune::test
