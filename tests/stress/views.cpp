// Eight threads of a host with a view each, at the same time: each shows its own content.

#include "support/host_view.h"
#include "support/process/endurance.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

constexpr uint8_t VIEWS = 8;
constexpr uint32_t KEY_SPACE = 0x20;

/** A host's thread with its view, whose colours and texts no other thread's view has. */
class Player {
public:
    explicit Player(uint8_t number) : number_(number), random_(number)
    {
        view_->set_refresh_rate(120);
        view_->set_mipmaps_enabled(number % 2 == 0);
    }
    ~Player()
    {
        const std::lock_guard lock(host().queue());
        view_->destroy();
    }

    void load()
    {
        {
            const std::lock_guard lock(host().queue());
            ASSERT_TRUE(view_->load("Stress", "Tint"));
        }
        const std::string text = std::to_string(number_);
        view_->key_event(KEY_SPACE, 0, text);
        EXPECT_EQ(view_.console().take_messages(), std::vector<std::string>{text});
    }

    void reset()
    {
        const std::lock_guard lock(host().queue());
        view_->reset();
    }

    /** Chooses a colour by input, draws a frame and finds the colour in it. */
    void play()
    {
        const uint8_t red = random_channel(), green = random_channel();
        view_->mouse_move(red, green);
        draw();
        const Image picture = view_.picture();
        EXPECT_TRUE(every_pixel_in(picture, picture.area(), {red, green, number_, 255},
                                   "a view shows its own input"));
    }

private:
    /** From 1 on: a move to where the pointer starts, (0, 0), would be none. */
    uint8_t random_channel()
    {
        return static_cast<uint8_t>(std::uniform_int_distribution(1, 255)(random_));
    }

    void draw()
    {
        std::this_thread::sleep_for(9ms);  // an interval, so that a frame is due
        const std::lock_guard lock(host().queue());
        view_.render();
    }

    HostView view_{Size{256, 256}};
    uint8_t number_;
    std::mt19937 random_;
};

TEST(Views, on_eight_threads_show_what_their_own_hosts_do)
{
    Watchdog watchdog;
    std::vector<std::unique_ptr<Player>> players;
    for (uint8_t i = 0; i < VIEWS; ++i)
        players.push_back(std::make_unique<Player>(i));

    std::vector<std::jthread> threads;
    for (auto& player : players) {
        threads.emplace_back([&watchdog, &player = *player] {
            for (int loading = 0; loading < times(4, 100) && !testing::Test::HasFailure();
                 ++loading) {
                player.load();
                for (int frame = 0; frame < times(25, 100) && !testing::Test::HasFailure();
                     ++frame) {
                    player.play();
                    watchdog.step();
                }
                player.reset();
            }
        });
    }
}

}  // namespace

}  // namespace marlune::test
