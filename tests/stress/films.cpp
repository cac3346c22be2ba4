// Videos that are damaged or malicious.

#include "support/fuzz.h"
#include "support/media/host_video_view.h"
#include "support/message_log.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

const std::string CLIPS[] = {
    "short.mp4",          "tracks.mkv", "alpha.webm",         "tone.m4a",
    "uneven.mkv",         "dot.mkv",    "half_red_png.mkv",   "red_ffv1.mkv",
    "half_red_apng.apng", "marks.srt",  "half_red_qtrle.mov", "subtitles.mkv",
};

// Extreme values for counts, sizes and times.
constexpr uint8_t EXTREMES[][4] = {{0, 0, 0, 0},
                                   {0xff, 0xff, 0xff, 0xff},
                                   {0x7f, 0xff, 0xff, 0xff},
                                   {0x80, 0, 0, 0},
                                   {0, 0, 0xff, 0xff}};

class Damage {
public:
    explicit Damage(Dice& dice) : dice_(dice) {}

    std::string film()
    {
        std::ifstream file(clip_path(dice_.one_of(CLIPS)), std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(file), {});
        for (size_t times = 1 + dice_.below(8); times > 0 && bytes.size() > 16; --times)
            (this->*dice_.one_of(KINDS))(bytes);
        return bytes;
    }

private:
    /** Half of the time near the start of the file, where most counts and sizes are. */
    size_t place(const std::string& bytes)
    {
        return dice_.below(dice_.below(2) ? std::min<size_t>(bytes.size(), 1024) : bytes.size());
    }

    void flip(std::string& bytes) { bytes[place(bytes)] ^= char(1 << dice_.below(8)); }
    void cut(std::string& bytes) { bytes.resize(1 + place(bytes)); }
    void repeat(std::string& bytes)
    {
        const size_t at = place(bytes);
        bytes.insert(at, bytes.substr(at, dice_.below(4096) + 1));
    }
    void leave_out(std::string& bytes) { bytes.erase(place(bytes), dice_.below(64) + 1); }
    void exaggerate(std::string& bytes)
    {
        const auto& extreme = dice_.one_of(EXTREMES);
        const size_t at = std::min(place(bytes), bytes.size() - std::size(extreme));
        std::copy(std::begin(extreme), std::end(extreme), bytes.begin() + at);
    }

    static constexpr void (Damage::*KINDS[])(std::string&) = {
        &Damage::flip, &Damage::cut, &Damage::repeat, &Damage::leave_out, &Damage::exaggerate};

    Dice& dice_;
};

class DamagedFilms : public Fuzz {
protected:
    DamagedFilms()
    {
        soak_seconds = 3600;
        // All messages of decoders.
        allow_messages_matching("");
    }
};

TEST_F(DamagedFilms, leave_a_player_that_plays)
{
    Damage damage(dice);
    const QTemporaryDir folder;
    HostVideoView view({640, 360});
    ASSERT_TRUE(view.load());
    const auto play_one = [&] {
        // Each has its own name, because the previous file may still be open.
        const QString name = QStringLiteral("film %1").arg(dice.below(1000));
        const std::string path = folder.filePath(name).toStdString();
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
    };
    repeat(play_one, 20);
    ASSERT_TRUE(view.change_to("short.mp4"));
    view->play();
    EXPECT_TRUE(view.draw_until([&] { return view->get_position() > 200; }));
}

}  // namespace

}  // namespace marlune::test
