// The sound of a player, recorded by a sound server that the test runs.

#include "support/media/host_video_view.h"
#include "support/media/sound_server.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <ostream>

namespace marlune::test {

namespace {

std::unique_ptr<SoundServer> server;

/** From before the library's start until after its stop. */
class Hearing : public testing::Environment {
    void SetUp() override { server = std::make_unique<SoundServer>(); }
    void TearDown() override { server.reset(); }
};

// Registered first, and so torn down last.
[[maybe_unused]] testing::Environment* const hearing =
    testing::AddGlobalTestEnvironment(new Hearing);

// The root mean square of FFmpeg's tone, whose amplitude is 1/8, spread over two channels.
constexpr double TONE_LEVEL = 0.125 / 2;

class SoundOfPlayers : public testing::Test {
protected:
    /** Whether a tone has this level, relative to the clips' own, and this frequency. */
    testing::AssertionResult is_heard(double volume, double frequency = 440)
    {
        Sound last;
        if (view.draw_until([&] {
                last = server->heard();
                return std::abs(last.level - volume * TONE_LEVEL) < 0.15 * volume * TONE_LEVEL
                    && std::abs(last.frequency - frequency) < 25;
            }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
            << last.level / TONE_LEVEL << " of the level and " << last.frequency << " Hz are heard";
    }

    testing::AssertionResult is_silent()
    {
        if (view.draw_until([&] { return server->heard().level < 0.001; }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "it is heard: " << server->heard().level;
    }

    HostVideoView view;
};

TEST_F(SoundOfPlayers, is_heard_while_they_play)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    EXPECT_TRUE(is_heard(1));
    view->pause();
    EXPECT_TRUE(is_silent());
    view->play();
    EXPECT_TRUE(is_heard(1));
    view->stop();
    EXPECT_TRUE(is_silent());
}

TEST_F(SoundOfPlayers, is_as_loud_as_the_volume)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    for (const float volume : {0.5f, 0.25f, 1.0f}) {
        view->set_volume(volume);
        EXPECT_TRUE(is_heard(volume)) << volume;
    }
    view->set_volume(0);
    EXPECT_TRUE(is_silent());
}

TEST_F(SoundOfPlayers, can_be_switched_off_and_on)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(is_heard(1));
    view->set_muted(true);
    EXPECT_TRUE(is_silent());
    view->set_muted(false);
    EXPECT_TRUE(is_heard(1));
}

TEST_F(SoundOfPlayers, is_that_of_the_track)
{
    view->set_loops(static_cast<unsigned int>(-1));
    ASSERT_TRUE(view.open("tracks.mkv"));
    EXPECT_TRUE(is_heard(1, 440));
    view->set_active_audio_track(1);
    EXPECT_TRUE(is_heard(1, 880));
    view->set_active_audio_track(-1);
    EXPECT_TRUE(is_silent());
    view->set_active_audio_track(0);
    EXPECT_TRUE(is_heard(1, 440));
}

TEST_F(SoundOfPlayers, ends_with_the_scene)
{
    ASSERT_TRUE(view.open("numbered.mp4"));
    ASSERT_TRUE(is_heard(1));
    view->reset();
    EXPECT_TRUE(is_silent());
    view->set_volume(0.5f);
    ASSERT_TRUE(view.load());
    EXPECT_TRUE(is_heard(0.5)) << "the next scene does not use the volume set between the scenes";
}

}  // namespace

}  // namespace marlune::test
