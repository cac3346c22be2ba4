// The view behind the facade of screen capture, the recorder of its scene, and the screen that a
// hint means.

#include "media/screen_capture_view.h"
#include "media/media_part.h"
#include "media/screen_choice.h"
#include "media/screen_recorder.h"
#include "support/message_log.h"
#include "support/qt_loop.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QScreen>
#include <QSignalSpy>
#include <QVideoFrame>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

constexpr auto NO_SCREEN_OF_THAT_NAME = "CaptureScreen: returning default primary screen";

/** With an application that has screens, unlike QCoreApplication. */
class WithApplication : public testing::Test {
protected:
    WithApplication()
    {
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
        have_application<QGuiApplication>();
    }
};

}  // namespace

// --- Which screen a hint means -------------------------------------------------------------------

namespace {

const QList<ScreenNames> TWO_SCREENS{
    {QStringLiteral("ABC-1"), QStringLiteral("U2720Q"), QStringLiteral("DP-1")},
    {QStringLiteral("77"), QStringLiteral("Dell P24"), QStringLiteral("HDMI-2")},
};

void expect_choice(const char* hint, const QList<ScreenNames>& screens,
                   std::optional<qsizetype> index, const std::string& warning = {})
{
    const ScreenChoice choice = choose_screen(QString::fromUtf8(hint), screens);
    EXPECT_EQ(choice.index, index) << "for the hint \"" << hint << '"';
    EXPECT_EQ(choice.warning.toStdString(), warning) << "for the hint \"" << hint << '"';
}

std::string wrong_number(int number, int count)
{
    return "CaptureScreen: wrong screen number supplied (index " + std::to_string(number)
        + ", available: " + std::to_string(count) + "), returning default primary screen";
}

}  // namespace

TEST(ScreenChoice, is_the_first_screen_without_a_hint)
{
    expect_choice("-1", TWO_SCREENS, 0);
    expect_choice("", TWO_SCREENS, 0);
}

TEST(ScreenChoice, is_the_screen_of_a_number)
{
    expect_choice("0", TWO_SCREENS, 0);
    expect_choice("1", TWO_SCREENS, 1);
    expect_choice("01", TWO_SCREENS, 1);
    expect_choice("+1", TWO_SCREENS, 1);
}

TEST(ScreenChoice, is_the_primary_screen_for_a_number_that_is_too_high)
{
    expect_choice("2", TWO_SCREENS, std::nullopt, wrong_number(2, 2));
    expect_choice("3", TWO_SCREENS, std::nullopt, wrong_number(3, 2));
    expect_choice("1", TWO_SCREENS.first(1), std::nullopt, wrong_number(1, 1));
    expect_choice("2147483647", TWO_SCREENS, std::nullopt, wrong_number(2147483647, 2));
}

TEST(ScreenChoice, is_the_primary_screen_for_a_negative_number)
{
    expect_choice("-2", TWO_SCREENS, std::nullopt);
    expect_choice("-01", TWO_SCREENS, std::nullopt);
    expect_choice(" -1", TWO_SCREENS, std::nullopt);
    expect_choice("-2147483648", TWO_SCREENS, std::nullopt);
}

TEST(ScreenChoice, is_the_first_screen_with_the_text_in_any_of_its_names)
{
    expect_choice("DELL", TWO_SCREENS, 1);
    expect_choice("dell p", TWO_SCREENS, 1);
    expect_choice("abc", TWO_SCREENS, 0);
    expect_choice("u2720q", TWO_SCREENS, 0);
    expect_choice("hdmi", TWO_SCREENS, 1);
    expect_choice("d", TWO_SCREENS, 0);
    expect_choice("-", TWO_SCREENS, 0);
}

TEST(ScreenChoice, searches_the_screens_in_their_order)
{
    const QList<ScreenNames> screens{{{}, {}, QStringLiteral("one X")},
                                     {QStringLiteral("X"), {}, {}}};
    expect_choice("x", screens, 0);
}

TEST(ScreenChoice, knows_letters_of_all_scripts)
{
    const QList<ScreenNames> screens{{{}, {}, {}}, {{}, QStringLiteral("Übergröße"), {}}};
    expect_choice("ÜBERGRÖ", screens, 1);
}

TEST(ScreenChoice, is_the_primary_screen_for_a_text_that_no_name_contains)
{
    expect_choice("Eizo", TWO_SCREENS, std::nullopt, NO_SCREEN_OF_THAT_NAME);
    expect_choice(" ", TWO_SCREENS.first(1), std::nullopt, NO_SCREEN_OF_THAT_NAME);
    expect_choice("1.0", TWO_SCREENS, std::nullopt, NO_SCREEN_OF_THAT_NAME);
    expect_choice("0x1", TWO_SCREENS, std::nullopt, NO_SCREEN_OF_THAT_NAME);
}

TEST(ScreenChoice, treats_a_hint_that_is_no_32_bit_number_as_text)
{
    expect_choice("2147483648", TWO_SCREENS, std::nullopt, NO_SCREEN_OF_THAT_NAME);
    expect_choice("99999999999999999999", {{QStringLiteral("99999999999999999999"), {}, {}}}, 0);
}

TEST(ScreenChoice, treats_a_number_as_a_place_even_if_a_name_contains_it)
{
    expect_choice("77", TWO_SCREENS, std::nullopt, wrong_number(77, 2));
}

TEST(ScreenChoice, is_none_when_no_screen_exists)
{
    expect_choice("-1", {}, std::nullopt);
    expect_choice("", {}, std::nullopt);
    expect_choice("0", {}, std::nullopt, wrong_number(0, 0));
    expect_choice("-5", {}, std::nullopt);
    expect_choice("DELL", {}, std::nullopt, NO_SCREEN_OF_THAT_NAME);
}

// --- The view ------------------------------------------------------------------------------------

namespace {

class ScreenCaptureViews : public WithApplication {
protected:
    const std::unique_ptr<ScreenCaptureView> view = std::make_unique<ScreenCaptureView>();
};

}  // namespace

TEST_F(ScreenCaptureViews, begin_active_and_without_a_hint)
{
    EXPECT_EQ(view->property("active"), 1u);
    EXPECT_EQ(view->property("physical_screen_hint"), QStringLiteral("-1"));
}

TEST_F(ScreenCaptureViews, notify_each_time_the_host_sets_a_value)
{
    QSignalSpy active(view.get(), &ScreenCaptureView::activeChanged);
    QSignalSpy hint(view.get(), &ScreenCaptureView::physical_screen_hintChanged);
    view->set_active(true);
    EXPECT_EQ(active.count(), 1) << "also for an equal value";
    view->set_active(false);
    EXPECT_EQ(active.count(), 2);
    EXPECT_EQ(view->property("active"), 0u);
    view->set_physical_screen_hint(QStringLiteral("-1"));
    EXPECT_EQ(hint.count(), 1);
    view->set_physical_screen_hint(QStringLiteral("Übergröße"));
    EXPECT_EQ(hint.count(), 2);
    EXPECT_EQ(view->property("physical_screen_hint"), QStringLiteral("Übergröße"));
}

TEST_F(ScreenCaptureViews, are_active_with_any_number_but_zero)
{
    QSignalSpy active(view.get(), &ScreenCaptureView::activeChanged);
    EXPECT_TRUE(view->setProperty("active", 2u));
    EXPECT_EQ(view->property("active"), 1u);
    EXPECT_EQ(active.count(), 0) << "no value has changed";
}

TEST_F(ScreenCaptureViews, accept_hints_from_any_thread_while_their_scene_reads_them)
{
    QQmlEngine engine;
    engine.rootContext()->setContextProperty(QStringLiteral("ctx"), view.get());
    QQmlComponent component(&engine);
    component.setData("import QtQml\nQtObject { property string hint: ctx.physical_screen_hint }",
                      QUrl());
    const std::unique_ptr<QObject> scene(component.create());
    ASSERT_TRUE(scene);
    serve_while([&] {
        for (int i = 0; i <= 2000; ++i)
            view->set_physical_screen_hint(QStringLiteral("a screen of number %1").arg(i));
    });
    EXPECT_TRUE(serve_until([&] { return scene->property("hint") == "a screen of number 2000"; }));
}

TEST_F(ScreenCaptureViews, let_their_scene_create_recorders)
{
    QQmlEngine engine;
    view->prepare_context(engine.rootContext());
    QQmlComponent component(&engine);
    component.setData("import Custom 1.0\nScreenRecorder {}", QUrl());
    const std::unique_ptr<QObject> recorder(component.create());
    EXPECT_TRUE(qobject_cast<ScreenRecorder*>(recorder.get()))
        << component.errorString().toStdString();
    serve_events();
}

// --- The recorder --------------------------------------------------------------------------------

namespace {

/** A recorder without a scene, and its capture object. */
class ScreenRecorders : public WithApplication {
protected:
    QScreenCapture* capture() const
    {
        return recorder->findChild<QScreenCapture*>(Qt::FindDirectChildrenOnly);
    }

    void set_hint(const char* hint)
    {
        ASSERT_TRUE(recorder->setProperty("physical_screen_hint", QString::fromUtf8(hint)));
    }

    std::unique_ptr<ScreenRecorder> recorder = std::make_unique<ScreenRecorder>();
    QVideoSink sink;
    QVideoSink other_sink;
};

}  // namespace

TEST_F(ScreenRecorders, begin_with_their_defaults_and_capture_nothing)
{
    EXPECT_EQ(recorder->property("active"), 1u);
    EXPECT_EQ(recorder->property("physical_screen_hint"), QStringLiteral("-1"));
    EXPECT_EQ(recorder->property("videoSink").value<QVideoSink*>(), nullptr);
    EXPECT_EQ(recorder->property("errorString"), QString());
    ASSERT_TRUE(capture());
    EXPECT_FALSE(capture()->isActive());
    EXPECT_FALSE(capture()->captureSession());
}

TEST_F(ScreenRecorders, choose_their_screen_when_they_get_a_sink)
{
    QSignalSpy spy(recorder.get(), &ScreenRecorder::videoSinkChanged);
    QObject::connect(recorder.get(), &ScreenRecorder::videoSinkChanged, [this] {
        EXPECT_FALSE(capture()->captureSession()) << "the screen is set after the signal";
    });
    ASSERT_TRUE(recorder->setProperty("videoSink", QVariant::fromValue(&sink)));
    EXPECT_EQ(recorder->video_sink(), &sink);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(capture()->screen(), QGuiApplication::screens().first());
    ASSERT_TRUE(capture()->captureSession());
    EXPECT_EQ(capture()->captureSession()->videoSink(), &sink);
    EXPECT_FALSE(capture()->isActive()) << "activeChanged starts the capture";
}

TEST_F(ScreenRecorders, choose_nothing_when_they_get_the_same_sink_again)
{
    recorder->set_video_sink(&sink);
    set_hint("99");
    QSignalSpy spy(recorder.get(), &ScreenRecorder::videoSinkChanged);
    recorder->set_video_sink(&sink);
    EXPECT_EQ(spy.count(), 0);

    const auto count = int(QGuiApplication::screens().size());
    expect_message(wrong_number(99, count));
    recorder->set_video_sink(&other_sink);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(capture()->screen(), QGuiApplication::primaryScreen());
    EXPECT_EQ(capture()->captureSession()->videoSink(), &other_sink);
}

TEST_F(ScreenRecorders, find_a_screen_by_its_real_name)
{
    const QScreen* const first = QGuiApplication::screens().first();
    ASSERT_FALSE(first->name().isEmpty());
    set_hint(qPrintable(first->name().toUpper()));
    recorder->set_video_sink(&sink);
    EXPECT_EQ(capture()->screen(), first);
}

TEST_F(ScreenRecorders, use_the_primary_screen_when_no_screen_has_the_name)
{
    expect_message(NO_SCREEN_OF_THAT_NAME);
    set_hint("no screen is called that");
    recorder->set_video_sink(&sink);
    EXPECT_EQ(capture()->screen(), QGuiApplication::primaryScreen());
}

TEST_F(ScreenRecorders, keep_their_screen_when_only_the_hint_changes)
{
    recorder->set_video_sink(&sink);
    QSignalSpy spy(capture(), &QScreenCapture::screenChanged);
    set_hint("no screen is called that");
    EXPECT_EQ(spy.count(), 0);
}

TEST_F(ScreenRecorders, are_active_with_any_number_but_zero)
{
    QSignalSpy active(recorder.get(), &ScreenRecorder::activeChanged);
    EXPECT_TRUE(recorder->setProperty("active", 2u));
    EXPECT_EQ(recorder->property("active"), 1u);
    EXPECT_EQ(active.count(), 0) << "no value has changed";
}

TEST_F(ScreenRecorders, capture_once_activity_is_signalled_and_not_before)
{
    recorder->set_video_sink(&sink);
    EXPECT_TRUE(recorder->setProperty("active", 1u));
    EXPECT_FALSE(capture()->isActive()) << "no value has changed";
    emit recorder->activeChanged();
    EXPECT_TRUE(capture()->isActive());
    EXPECT_TRUE(serve_until([&] { return sink.videoFrame().isValid(); }));
    EXPECT_TRUE(recorder->setProperty("active", 0u));
    EXPECT_FALSE(capture()->isActive());
    EXPECT_TRUE(recorder->setProperty("active", 1u));
    EXPECT_TRUE(capture()->isActive());
}

TEST_F(ScreenRecorders, send_frames_to_the_sink_that_was_set_last)
{
    recorder->set_video_sink(&sink);
    emit recorder->activeChanged();
    ASSERT_TRUE(serve_until([&] { return sink.videoFrame().isValid(); }));
    recorder->set_video_sink(&other_sink);
    EXPECT_TRUE(serve_until([&] { return other_sink.videoFrame().isValid(); }));
    EXPECT_TRUE(capture()->isActive());
}

TEST_F(ScreenRecorders, continue_without_a_sink_and_after_theirs_is_destroyed)
{
    auto short_lived = std::make_unique<QVideoSink>();
    recorder->set_video_sink(short_lived.get());
    emit recorder->activeChanged();
    short_lived.reset();
    serve_events();
    EXPECT_EQ(recorder->video_sink(), nullptr);
    recorder->set_video_sink(&sink);
    EXPECT_TRUE(serve_until([&] { return sink.videoFrame().isValid(); }));
    recorder->set_video_sink(nullptr);
    serve_events();
    EXPECT_EQ(capture()->captureSession()->videoSink(), nullptr);
}

TEST_F(ScreenRecorders, may_be_destroyed_while_they_capture)
{
    recorder->set_video_sink(&sink);
    emit recorder->activeChanged();
    ASSERT_TRUE(serve_until([&] { return sink.videoFrame().isValid(); }));
    recorder.reset();
    sink.setVideoFrame({});
    serve_events();
    EXPECT_FALSE(sink.videoFrame().isValid());
}

TEST_F(ScreenRecorders, end_every_capture_when_the_library_stops)
{
    ScreenRecorder other;
    recorder->set_video_sink(&sink);
    emit recorder->activeChanged();
    media_part::close_players();
    EXPECT_FALSE(capture());
    EXPECT_FALSE(other.findChild<QScreenCapture*>());
    EXPECT_TRUE(recorder->setProperty("active", 0u));
    recorder->set_video_sink(&other_sink);
    EXPECT_EQ(recorder->video_sink(), &other_sink);
}

}  // namespace marlune::test
