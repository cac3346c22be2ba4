// Films that are damaged, or made to do harm. Each run prints its seed, by which it can be repeated:
// MARLUNE_FUZZ_SEED=... test-stress_films

#include "support/endurance.h"
#include "support/host_video_view.h"
#include "support/message_log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <string>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

const std::string CLIPS[] = {
    "short.mp4",          "tracks.mkv", "alpha.webm",         "tone.m4a",
    "uneven.mkv",         "dot.mkv",    "half_red_png.mkv",   "red_ffv1.mkv",
    "half_red_apng.apng", "marks.srt",  "half_red_qtrle.mov", "subtitles.mkv",
};

// What counts, sizes and times are broken by first.
constexpr uint8_t EXTREMES[][4] = {{0, 0, 0, 0},
                                   {0xff, 0xff, 0xff, 0xff},
                                   {0x7f, 0xff, 0xff, 0xff},
                                   {0x80, 0, 0, 0},
                                   {0, 0, 0xff, 0xff}};

class Damage {
public:
    explicit Damage(uint64_t seed) : random_(seed) {}

    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random_); }

    std::string film()
    {
        std::ifstream file(clip_path(CLIPS[below(std::size(CLIPS))]), std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(file), {});
        for (size_t times = 1 + below(8); times > 0 && bytes.size() > 16; --times)
            (this->*KINDS[below(std::size(KINDS))])(bytes);
        return bytes;
    }

private:
    /** Half of the time in what comes first, where most of what is counted and measured stands. */
    size_t place(const std::string& bytes)
    {
        return below(below(2) ? std::min<size_t>(bytes.size(), 1024) : bytes.size());
    }

    void flip(std::string& bytes) { bytes[place(bytes)] ^= char(1 << below(8)); }
    void cut(std::string& bytes) { bytes.resize(1 + place(bytes)); }
    void repeat(std::string& bytes)
    {
        const size_t at = place(bytes);
        bytes.insert(at, bytes.substr(at, below(4096) + 1));
    }
    void leave_out(std::string& bytes) { bytes.erase(place(bytes), below(64) + 1); }
    void exaggerate(std::string& bytes)
    {
        const auto& extreme = EXTREMES[below(std::size(EXTREMES))];
        const size_t at = std::min(place(bytes), bytes.size() - std::size(extreme));
        std::copy(std::begin(extreme), std::end(extreme), bytes.begin() + at);
    }

    static constexpr void (Damage::*KINDS[])(std::string&) = {
        &Damage::flip, &Damage::cut, &Damage::repeat, &Damage::leave_out, &Damage::exaggerate};

    std::mt19937_64 random_;
};

uint64_t seed()
{
    const char* const given = std::getenv("MARLUNE_FUZZ_SEED");
    return given ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

TEST(DamagedFilms, leave_a_player_that_plays)
{
    const uint64_t number = seed();
    std::cout << "MARLUNE_FUZZ_SEED=" << number << std::endl;
    RecordProperty("seed", std::to_string(number));
    // All that decoders have to say.
    allow_messages_matching("");
    Watchdog watchdog;
    Damage damage(number);
    const QTemporaryDir folder;
    HostVideoView view({640, 360});
    ASSERT_TRUE(view.load());
    const int rounds = times(40, 20'000);
    for (int round = 0; round < rounds; ++round) {
        const std::string path = folder.filePath(QString("film %1").arg(round % 4)).toStdString();
        std::ofstream(path, std::ios::binary | std::ios::trunc) << damage.film();
        view->set_source("");
        view->set_source(path);
        view->play();
        view->set_active_subtitle_track(0);
        const auto is_seen = [&] {
            const int status = view->get_media_status();
            return status == INVALID_MEDIA || status == END_OF_MEDIA || view->get_position() > 100;
        };
        view.draw_until(is_seen, 1s);
        watchdog.step();
    }
    ASSERT_TRUE(view.change_to("short.mp4"));
    view->play();
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
}

}  // namespace

}  // namespace marlune::test
