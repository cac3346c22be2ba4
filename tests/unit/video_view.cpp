// The view behind the facade of video players, without a scene: the context of its component, and
// its notifications to the host. media_views.cpp has the rules of all media views.

#include "media/video_view.h"
#include "media/media_part.h"
#include "media/metadata.h"
#include "media/subtitle_text.h"
#include "media/time_text.h"
#include "support/fill_slot.h"
#include "support/media/callback_recorder.h"
#include "support/message_log.h"
#include "support/qt_loop.h"

#include <QFile>
#include <QMediaMetaData>
#include <QMetaEnum>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

class VideoViews : public testing::Test {
protected:
    void SetUp() override
    {
        qputenv("QT_MEDIA_BACKEND", "ffmpeg");
        have_application();
        view = std::make_unique<VideoView>();
    }

    QString text(const char* property) const { return view->property(property).toString(); }

    std::unique_ptr<VideoView> view;
};

/** Records the names of the view's signals in the order in which they are emitted. */
class SignalOrder : public QObject {
    Q_OBJECT

public:
    explicit SignalOrder(VideoView& view)
    {
        const QMetaObject& meta = VideoView::staticMetaObject;
        const QMetaMethod slot =
            staticMetaObject.method(staticMetaObject.indexOfSlot("write_down()"));
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Signal)
                connect(&view, meta.method(i), this, slot);
        }
    }

    QStringList names;

public slots:
    void write_down()
    {
        names +=
            QString::fromLatin1(VideoView::staticMetaObject.method(senderSignalIndex()).name());
    }
};

}  // namespace

TEST_F(VideoViews, begin_with_their_defaults)
{
    EXPECT_EQ(text("path_or_url"), u"");
    EXPECT_EQ(text("path_or_url_humanized"), u"");
    EXPECT_EQ(view->property("fill_mode"), 1u);
    EXPECT_EQ(view->property("ui_controls_source_humanized"), true);
    EXPECT_EQ(view->property("playing_position"), 0);
    EXPECT_EQ(text("playing_position_str"), u"00:00:00");
    EXPECT_EQ(text("playing_minus_position_str"), u"-00:00:00");
    EXPECT_EQ(view->property("playing_position_pct"), 0.0);
    EXPECT_EQ(view->property("duration"), 0);
    EXPECT_EQ(view->property("countSubtitleTracks"), 0);
    EXPECT_EQ(view->property("countAudioTracks"), 0);
    EXPECT_EQ(view->property("countVideoTracks"), 0);
    EXPECT_EQ(view->property("controls_enabled"), true);
    EXPECT_EQ(view->property("controls_auto_hide"), false);
    EXPECT_EQ(view->property("player").value<QMediaPlayer*>(), view->player());
    EXPECT_EQ(view->property("audioOutput").value<QAudioOutput*>(), view->audio_output());
}

TEST_F(VideoViews, own_a_player_with_its_output_until_they_have_a_scene)
{
    ASSERT_TRUE(view->player() && view->audio_output());
    EXPECT_EQ(view->player()->parent(), view.get());
    EXPECT_EQ(view->audio_output()->parent(), view.get());
    EXPECT_EQ(view->player()->audioOutput(), view->audio_output());
    EXPECT_EQ(view->player()->source(), QUrl());
}

TEST_F(VideoViews, survive_a_scene_that_destroys_their_player)
{
    delete view->player();
    delete view->audio_output();
    view->play();
    view->pause();
    view->stop();
    view->mute();
    view->unmute();
    view->set_active_subtitle_track(0);
    view->setVideoSink(nullptr);
    EXPECT_EQ(view->get_current_subtitle_name(), u"");
    expect_message("set_position failed");
    view->set_position(1);
    QObject root;
    view->post_setup(nullptr, &root);
    view->before_reset();
    EXPECT_TRUE(view->player() && view->audio_output()) << "they are there for the next scene";
}

// --- Time ----------------------------------------------------------------------------------------

TEST(TimeText, has_two_digits_or_more_in_each_place)
{
    EXPECT_EQ(time_text(0), u"00:00:00");
    EXPECT_EQ(time_text(59), u"00:00:59");
    EXPECT_EQ(time_text(60), u"00:01:00");
    EXPECT_EQ(time_text(3599), u"00:59:59");
    EXPECT_EQ(time_text(3600), u"01:00:00");
    EXPECT_EQ(time_text(3725), u"01:02:05");
    EXPECT_EQ(time_text(360000), u"100:00:00") << "hours do not wrap";
}

TEST(TimeText, shows_each_minus_of_a_negative_time)
{
    EXPECT_EQ(time_text(-1), u"00:00:-1");
    EXPECT_EQ(time_text(-3725), u"-1:-2:-5");
}

TEST_F(VideoViews, show_the_position_as_texts)
{
    view->setProperty("duration", qint64(7200000));
    view->show_position(3725400);
    EXPECT_EQ(view->property("playing_position"), 3725);
    EXPECT_EQ(text("playing_position_str"), u"01:02:05");
    EXPECT_EQ(text("playing_minus_position_str"), u"-00:57:54");
    EXPECT_DOUBLE_EQ(view->property("playing_position_pct").toDouble(), 3725400 * 100.0 / 7200000);
    EXPECT_EQ(view->playing_position_to_str(3725), u"01:02:05");
}

TEST_F(VideoViews, report_the_position_in_order_and_once_a_second)
{
    view->setProperty("duration", qint64(10000));
    SignalOrder order(*view);
    view->show_position(1000);
    const QStringList expected{"playing_position_pctChanged", "playing_positionChanged",
                               "playing_position_strChanged", "playing_minus_position_strChanged"};
    EXPECT_EQ(order.names, expected);
    view->show_position(1999);
    EXPECT_EQ(order.names, expected) << "the second has not changed";
    EXPECT_EQ(view->property("playing_position_pct"), 10.0);
    view->show_position(2000);
    EXPECT_EQ(order.names, expected + expected);
}

TEST_F(VideoViews, show_positions_where_the_duration_is_unknown_or_wrong)
{
    view->show_position(2500);
    EXPECT_TRUE(std::isinf(view->property("playing_position_pct").toDouble()));
    EXPECT_EQ(text("playing_minus_position_str"), u"-00:00:-2");
    view->show_position(0);
    EXPECT_TRUE(std::isnan(view->property("playing_position_pct").toDouble()));
    EXPECT_EQ(text("playing_minus_position_str"), u"-00:00:00");
}

TEST_F(VideoViews, read_the_position_repeatedly_while_they_play)
{
    auto* const timer = view->findChild<QTimer*>(Qt::FindDirectChildrenOnly);
    ASSERT_TRUE(timer);
    EXPECT_EQ(timer->interval(), 500);
    EXPECT_FALSE(timer->isActive());
    emit view->player()->playbackStateChanged(QMediaPlayer::PlayingState);
    EXPECT_TRUE(timer->isActive());
    emit view->player()->playbackStateChanged(QMediaPlayer::PausedState);
    EXPECT_FALSE(timer->isActive());
    emit view->player()->playbackStateChanged(QMediaPlayer::PlayingState);
    emit view->player()->playbackStateChanged(QMediaPlayer::StoppedState);
    EXPECT_FALSE(timer->isActive());
}

TEST_F(VideoViews, read_the_players_position_at_each_timeout)
{
    view->setProperty("playing_position", qint64(9));
    QMetaObject::invokeMethod(view->findChild<QTimer*>(), "timeout", Qt::DirectConnection);
    EXPECT_EQ(view->property("playing_position"), 0) << "the position of a player without a source";
}

// --- Signals of the player -----------------------------------------------------------------------

TEST_F(VideoViews, adopt_the_duration)
{
    SignalOrder order(*view);
    emit view->player()->durationChanged(1234);
    EXPECT_EQ(view->property("duration"), 1234);
    EXPECT_EQ(order.names, QStringList{"durationChanged"});
}

TEST_F(VideoViews, count_tracks_when_they_change_and_when_playing_begins)
{
    const QStringList expected{"countSubtitleTracksChanged", "countAudioTracksChanged",
                               "countVideoTracksChanged"};
    SignalOrder order(*view);
    emit view->player()->tracksChanged();
    EXPECT_EQ(order.names, expected);
    emit view->player()->playbackStateChanged(QMediaPlayer::PlayingState);
    EXPECT_EQ(order.names, expected + expected);
    emit view->player()->playbackStateChanged(QMediaPlayer::PausedState);
    EXPECT_EQ(order.names, expected + expected);
}

TEST_F(VideoViews, report_that_the_active_tracks_have_changed)
{
    SignalOrder order(*view);
    emit view->player()->activeTracksChanged();
    EXPECT_EQ(order.names, QStringList{"activeTracksChanged"});
}

TEST_F(VideoViews, name_a_file_without_its_folders)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("ein Über & 100% a.mp4"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    SignalOrder order(*view);
    const QUrl url = QUrl::fromLocalFile(path);
    emit view->player()->sourceChanged(url);
    EXPECT_EQ(text("path_or_url_humanized"), u"ein Über & 100% a.mp4");
    EXPECT_EQ(text("path_or_url"), url.toString());
    const QStringList expected{"m_ui_controls_source_humanizedChanged", "m_path_or_urlChanged"};
    EXPECT_EQ(order.names, expected);
    emit view->player()->sourceChanged(QUrl(path));
    EXPECT_EQ(text("path_or_url_humanized"), u"ein Über & 100% a.mp4") << "a path without a scheme";
    EXPECT_EQ(text("path_or_url"), QUrl(path).toString());
}

TEST_F(VideoViews, name_a_source_that_is_no_file_by_its_url)
{
    for (const char* const url : {"http://example.invalid/a/b.mp4?c=d", "file:///nowhere/a.mp4"}) {
        emit view->player()->sourceChanged(QUrl(QString::fromLatin1(url)));
        EXPECT_EQ(text("path_or_url_humanized"), QLatin1StringView(url));
        EXPECT_EQ(text("path_or_url"), QLatin1StringView(url));
    }
}

TEST_F(VideoViews, name_a_source_without_a_file_in_its_path_by_its_url)
{
    for (const char* const url : {"http://example.invalid/", "rtsp://camera.invalid/"}) {
        emit view->player()->sourceChanged(QUrl(QString::fromLatin1(url)));
        EXPECT_EQ(text("path_or_url_humanized"), QLatin1StringView(url)) << "folders are no files";
    }
}

// --- Requests of the scene -----------------------------------------------------------------------

TEST_F(VideoViews, switch_the_controls_and_notify_each_time)
{
    QSignalSpy enabled(view.get(), &VideoView::controls_enabledChanged);
    QSignalSpy auto_hide(view.get(), &VideoView::controls_auto_hideChanged);
    view->set_controls_enabled(true);
    view->set_controls_auto_hide(false);
    EXPECT_EQ(enabled.count(), 1);
    EXPECT_EQ(auto_hide.count(), 1);
    view->set_controls_enabled(false);
    view->set_controls_auto_hide(true);
    EXPECT_FALSE(view->controls_enabled());
    EXPECT_TRUE(view->controls_auto_hide());
}

TEST_F(VideoViews, refuse_to_seek_when_the_source_does_not_allow_it)
{
    expect_message("set_position failed");
    view->set_position(100);
    EXPECT_EQ(view->player()->position(), 0);
}

TEST_F(VideoViews, switch_sound_off_and_on)
{
    view->mute();
    EXPECT_TRUE(view->audio_output()->isMuted());
    view->unmute();
    EXPECT_FALSE(view->audio_output()->isMuted());
}

TEST_F(VideoViews, notify_the_scene_of_its_sink)
{
    QVideoSink sink;
    QSignalSpy spy(view.get(), &VideoView::playerChanged);
    view->setVideoSink(&sink);
    EXPECT_EQ(view->player()->videoSink(), &sink);
    EXPECT_EQ(spy.count(), 1);
    view->setVideoSink(nullptr);
}

TEST_F(VideoViews, notify_about_the_tracks_even_when_the_track_does_not_exist)
{
    allow_messages_matching("Cannot set active track without open source");
    QSignalSpy spy(view.get(), &VideoView::activeTracksChanged);
    for (const int track : {5, 0, -1, -100, 2147483647}) {
        spy.clear();
        view->set_active_subtitle_track(track);
        EXPECT_GE(spy.count(), 1) << track;
        EXPECT_EQ(view->player()->activeSubtitleTrack(), -1) << track;
    }
    EXPECT_EQ(view->get_current_subtitle_name(), u"");
}

// --- Set-up and end of the scene -----------------------------------------------------------------

TEST_F(VideoViews, give_the_player_to_the_scene_with_the_source)
{
    // A message of Qt 6.11, which opens the source at once.
    allow_messages_matching("^Could not open media");
    view->setProperty("path_or_url", QStringLiteral("file:///nowhere/a.mp4"));
    view->set_auto_play(false);
    QSignalSpy played(view->player(), &QMediaPlayer::playbackStateChanged);
    QObject root;
    view->post_setup(nullptr, &root);
    EXPECT_EQ(view->player()->parent(), &root);
    EXPECT_EQ(view->audio_output()->parent(), &root);
    EXPECT_EQ(view->player()->source(), QUrl(QStringLiteral("file:///nowhere/a.mp4")));
    EXPECT_EQ(played.count(), 0);
}

TEST_F(VideoViews, create_a_new_player_when_the_scene_destroys_the_old_one)
{
    auto root = std::make_unique<QObject>();
    view->post_setup(nullptr, root.get());
    QSignalSpy player_changed(view.get(), &VideoView::playerChanged);
    QSignalSpy output_changed(view.get(), &VideoView::audioOutputChanged);
    const QPointer old_player = view->player();
    const QPointer old_output = view->audio_output();
    old_player->setPlaybackRate(2);
    old_player->setLoops(3);
    old_output->setVolume(0.25f);
    old_output->setMuted(true);
    emit old_player->durationChanged(5000);

    view->before_reset();
    root.reset();
    EXPECT_TRUE(!old_player && !old_output) << "they are destroyed with the scene";
    ASSERT_TRUE(view->player() && view->audio_output());
    EXPECT_EQ(view->player()->parent(), view.get());
    EXPECT_EQ(view->player()->audioOutput(), view->audio_output());
    EXPECT_EQ(view->player()->source(), QUrl());
    EXPECT_EQ(view->player()->playbackRate(), 2);
    EXPECT_EQ(view->player()->loops(), 3);
    EXPECT_EQ(view->audio_output()->volume(), 0.25f);
    EXPECT_TRUE(view->audio_output()->isMuted());
    EXPECT_EQ(view->property("duration"), 0);
    EXPECT_EQ(player_changed.count(), 1);
    EXPECT_EQ(output_changed.count(), 1);
}

TEST_F(VideoViews, keep_a_player_that_no_scene_owns)
{
    const QPointer player = view->player();
    view->before_reset();
    EXPECT_EQ(view->player(), player);
    EXPECT_TRUE(player);
}

// --- The callbacks -------------------------------------------------------------------------------

TEST_F(VideoViews, notify_the_host_before_the_scene)
{
    std::vector<std::string> order;
    fill(view->callbacks().duration_changed, [&](int64_t) { order.push_back("host"); });
    QObject::connect(view.get(), &VideoView::durationChanged, [&] { order.push_back("scene"); });
    emit view->player()->durationChanged(1);
    EXPECT_EQ(order, (std::vector<std::string>{"host", "scene"}));
}

TEST_F(VideoViews, report_events_of_the_next_player_as_of_the_first)
{
    auto root = std::make_unique<QObject>();
    view->post_setup(nullptr, root.get());
    CallbackRecorder recorder;
    recorder.follow_all(view->callbacks());
    view->before_reset();
    EXPECT_EQ(recorder.take(), u"") << "an adopted value is no change";
    root.reset();
    emit view->player()->durationChanged(1);
    EXPECT_EQ(recorder.take(), u"duration_changed 1") << "the host is notified once";
    view->audio_output()->setVolume(0.5f);
    EXPECT_EQ(recorder.take(), u"volume_changed 0.5");
}

// --- Subtitles -----------------------------------------------------------------------------------

TEST(Subtitles, lose_their_formatting_marks)
{
    EXPECT_EQ(plain_subtitle(QStringLiteral("{\\b1}bold{\\b0} and {\\c&HFF&\\i1}red")),
              u"bold and red");
    EXPECT_EQ(plain_subtitle(QStringLiteral("a\\hb")), u"a b");
    EXPECT_EQ(plain_subtitle(QStringLiteral("{laughs} C:\\new")), u"{laughs} C:\\new");
    EXPECT_EQ(plain_subtitle(QStringLiteral("{\\b1")), u"{\\b1") << "an unclosed brace is no mark";
    EXPECT_EQ(plain_subtitle({}), u"");
}

TEST(Subtitles, are_shortened_when_they_are_too_long_to_read)
{
    const QString long_line(5'000'000, u'x');
    EXPECT_EQ(plain_subtitle(long_line), QString(2000, u'x') + u'\u2026');
    EXPECT_EQ(plain_subtitle(QString(5'000'000, u'\n')).count(u'\n'), 39);
}

// --- Metadata ------------------------------------------------------------------------------------

TEST(Metadata, names_its_keys_as_qt_does)
{
    const auto keys = QMetaEnum::fromType<QMediaMetaData::Key>();
    ASSERT_GE(keys.keyCount(), 29);
    for (int key = 0; key <= 28; ++key) {
        QMediaMetaData metadata;
        metadata.insert(QMediaMetaData::Key(key), QStringLiteral("value"));
        const std::map<std::string, std::string> expected{{keys.valueToKey(key), "value"}};
        EXPECT_EQ(to_host(metadata), expected);
    }
}

TEST(Metadata, has_no_name_for_a_key_that_is_not_known)
{
    QMediaMetaData metadata;
    metadata.insert(QMediaMetaData::Key(29), QStringLiteral("a"));
    EXPECT_EQ(to_host(metadata), (std::map<std::string, std::string>{{"", "a"}}));
    metadata.insert(QMediaMetaData::Key(31), QStringLiteral("a"));
    EXPECT_EQ(to_host(metadata).size(), 1u) << "one key replaces the other";
}

TEST(Metadata, has_texts_for_values_that_can_be_texts)
{
    QMediaMetaData metadata;
    metadata.insert(QMediaMetaData::Title, QStringLiteral("Ä"));
    metadata.insert(QMediaMetaData::Duration, qint64(1500));
    metadata.insert(QMediaMetaData::HasHdrContent, false);
    metadata.insert(QMediaMetaData::Resolution, QSize(4, 3));
    metadata.insert(QMediaMetaData::ThumbnailImage, QByteArray());
    const std::map<std::string, std::string> expected{{"Title", "Ä"},
                                                      {"Duration", "1500"},
                                                      {"HasHdrContent", "false"},
                                                      {"Resolution", ""},
                                                      {"ThumbnailImage", ""}};
    EXPECT_EQ(to_host(metadata), expected);
}

TEST(Metadata, of_tracks_is_one_map_for_each_in_their_order)
{
    QMediaMetaData first, second;
    first.insert(QMediaMetaData::Title, QStringLiteral("1"));
    second.insert(QMediaMetaData::Title, QStringLiteral("2"));
    const auto maps = to_host(QList<QMediaMetaData>{first, QMediaMetaData(), second});
    ASSERT_EQ(maps.size(), 3u);
    EXPECT_EQ(maps[0].at("Title"), "1");
    EXPECT_TRUE(maps[1].empty());
    EXPECT_EQ(maps[2].at("Title"), "2");
}

}  // namespace marlune::test

#include "video_view.moc"
