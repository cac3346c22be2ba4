// The tracks, subtitles and metadata of a source.

#include "support/media/host_video_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

constexpr Size WIDE{640, 360};

// The background of the clip with two tracks of each kind.
constexpr Colour GROUND{0x20, 0x40, 0x60, 0xff};

class Tracks : public testing::Test {
protected:
    void SetUp() override
    {
        view->set_controls(false);
        ASSERT_TRUE(view.open("tracks.mkv"));
    }

    /** Bright pixels in the part of the frame where subtitles are drawn. */
    int bright_pixels()
    {
        const Image image = view.picture();
        int count = 0;
        for (uint32_t y = 280; y < 360; ++y) {
            for (uint32_t x = 0; x < 640; ++x)
                count += image.pixel(x, y).r > 200;
        }
        return count;
    }

    bool shows_subtitle()
    {
        return view.draw_until([&] { return bright_pixels() > 100; });
    }

    bool shows_none()
    {
        return view.draw_until([&] {
            return bright_pixels() == 0 && is_close(view.picture().pixel(320, 300), GROUND, 8);
        });
    }

    HostVideoView view{WIDE};
};

TEST_F(Tracks, are_listed_with_languages_and_titles)
{
    const auto audio = view->get_audio_tracks();
    ASSERT_EQ(audio.size(), 2u);
    EXPECT_EQ(audio[0].at("Language"), "English");
    EXPECT_EQ(audio[0].at("Title"), "Film");
    EXPECT_EQ(audio[0].at("AudioCodec"), "AAC");
    EXPECT_EQ(audio[1].at("Language"), "German");
    EXPECT_EQ(audio[1].at("Title"), "Kommentar");
    const auto subtitles = view->get_subtitle_tracks();
    ASSERT_EQ(subtitles.size(), 2u);
    EXPECT_EQ(subtitles[0].at("Language"), "English");
    EXPECT_EQ(subtitles[1].at("Language"), "French");
    const auto video = view->get_video_tracks();
    ASSERT_EQ(video.size(), 1u);
    EXPECT_EQ(video[0].at("VideoCodec"), "H264");
    EXPECT_EQ(video[0].at("Resolution"), "") << "a size has no text";
}

TEST_F(Tracks, begin_with_the_first_and_without_subtitles)
{
    EXPECT_EQ(view->get_active_audio_track(), 0);
    EXPECT_EQ(view->get_active_video_track(), 0);
    EXPECT_EQ(view->get_active_subtitle_track(), -1);
    EXPECT_EQ(view->get_current_subtitle_name(), "");
    EXPECT_TRUE(shows_none());
}

TEST_F(Tracks, of_sound_are_switched_while_playing)
{
    view->set_active_audio_track(1);
    EXPECT_EQ(view->get_active_audio_track(), 1) << "calls of one thread are served in turn";
    const uint64_t position = view->get_position();
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > position + 300; }));
    view->set_active_audio_track(-1);
    EXPECT_EQ(view->get_active_audio_track(), -1);
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > position + 600; }));
    EXPECT_EQ(view->get_playback_state(), PLAYING);
}

TEST_F(Tracks, of_video_are_switched_off_and_on)
{
    view->set_active_video_track(-1);
    EXPECT_EQ(view->get_active_video_track(), -1);
    view->set_active_video_track(0);
    EXPECT_EQ(view->get_active_video_track(), 0);
    EXPECT_TRUE(view.wait_for_colour(320, 100, GROUND, 8));
}

TEST_F(Tracks, of_subtitles_are_drawn_on_the_picture)
{
    view->set_active_subtitle_track(0);
    EXPECT_EQ(view->get_active_subtitle_track(), 0);
    EXPECT_EQ(view->get_current_subtitle_name(), "English");
    EXPECT_TRUE(shows_subtitle());
    const int english = bright_pixels();
    view->set_active_subtitle_track(1);
    EXPECT_EQ(view->get_current_subtitle_name(), "French");
    EXPECT_TRUE(view.draw_until([&] {
        const int pixels = bright_pixels();
        return pixels > 50 && pixels < english * 3 / 4;
    })) << "a shorter text";
    view->set_active_subtitle_track(-1);
    EXPECT_EQ(view->get_current_subtitle_name(), "");
    EXPECT_TRUE(shows_none());
}

TEST_F(Tracks, of_subtitles_go_at_once_when_they_are_switched_off_while_paused)
{
    view->set_active_subtitle_track(0);
    ASSERT_TRUE(shows_subtitle());
    view->pause();
    view->set_active_subtitle_track(-1);
    EXPECT_TRUE(shows_none());
}

TEST_F(Tracks, of_subtitles_are_drawn_without_their_marks)
{
    view->set_active_subtitle_track(-1);
    ASSERT_TRUE(view.change_to("subtitles.mkv"));
    view->play();
    view->set_active_subtitle_track(0);
    ASSERT_TRUE(shows_subtitle());
    // Upright strokes alone: serifs or braces would give longer rows of bright pixels.
    const Image image = view.picture();
    int widest = 0;
    for (uint32_t y = 280; y < 360; ++y) {
        int run = 0;
        for (uint32_t x = 0; x < 640; ++x) {
            run = image.pixel(x, y).r > 200 ? run + 1 : 0;
            widest = std::max(widest, run);
        }
    }
    EXPECT_LT(widest, 8) << "see " << keep_picture(image);
}

TEST_F(Tracks, of_subtitles_do_not_cover_the_whole_frame)
{
    ASSERT_TRUE(view.change_to("subtitles.mkv"));
    view->play();
    view->set_active_subtitle_track(1);
    ASSERT_TRUE(shows_subtitle());
    EXPECT_TRUE(view.wait_for_colour(320, 4, GROUND, 8));
}

TEST_F(Tracks, of_subtitles_that_do_not_exist_switch_subtitles_off)
{
    for (const int track : {2, 5, -1, -5, 2147483647}) {
        view->set_active_subtitle_track(1);
        ASSERT_EQ(view->get_active_subtitle_track(), 1);
        view->set_active_subtitle_track(track);
        EXPECT_EQ(view->get_active_subtitle_track(), -1) << track;
    }
}

TEST_F(Tracks, are_gone_with_the_source)
{
    view->set_source("");
    EXPECT_TRUE(view->get_audio_tracks().empty());
    EXPECT_TRUE(view->get_video_tracks().empty());
    EXPECT_TRUE(view->get_subtitle_tracks().empty());
    EXPECT_TRUE(view->get_metadata().empty());
    EXPECT_EQ(view->get_current_subtitle_name(), "");
}

TEST(SourceMetadata, contains_every_value_that_has_a_text)
{
    HostVideoView view;
    ASSERT_TRUE(view.open("tone.m4a"));
    const MVideoPlayerView::Metadata metadata = view->get_metadata();
    const std::pair<const char*, const char*> expected[] = {
        {"Title", "A Title – ein Titel"},
        {"AlbumTitle", "The Album"},
        {"AlbumArtist", "The Album's Artist"},
        {"ContributingArtist", "The Artist"},
        {"Comment", "A comment"},
        {"Description", "A description"},
        {"Genre", "The Genre"},
        {"Copyright", "The owner"},
        {"TrackNumber", "7"},
        {"Duration", "2000"},
        {"AudioCodec", "AAC"},
        {"FileFormat", "MPEG4"},
    };
    for (const auto& [key, value] : expected) {
        ASSERT_TRUE(metadata.contains(key)) << key;
        EXPECT_EQ(metadata.at(key), value) << key;
    }
}

}  // namespace

}  // namespace marlune::test
