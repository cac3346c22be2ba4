#include "measures/measures.h"

#include "ours/video.h"
#include "raw/video.h"
#include "support/clips.h"
#include "support/host_steps.h"
#include "support/numbered_picture.h"

#include <marlune/app.h>

#include <QObject>

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace marlune::bench {

namespace {

// Smaller than the clips: at their size, a software rasteriser alone would need more time than is
// available, and no other cost could be measured.
constexpr Picture picture{960, 540};

// The start of a video does not count: a player needs some time to reach its rate.
constexpr double seconds_to_settle = 0.4;
constexpr double seconds_a_turn = 1.6;
constexpr auto patience = 20s;

struct Clip {
    const char* name;
    const char* file;
    int rate;

    int frames(double seconds) const { return static_cast<int>(seconds * rate); }
};

constexpr Clip clips[] = {{"1080p30", "1080p30.mp4", 30}, {"1080p60", "1080p60.mp4", 60}};

/** The results of one player in its turn. */
struct Turn {
    double processor_time_a_second = 0;
    double share_shown = 0;
};

/** Draws sixty times a second, like a host, and records which frames of the clip it gets. */
template <typename Video>
class Watch {
public:
    Watch(const Video& video, PixelReader& reader, Clip clip, double phase)
        : video_(video), reader_(reader), clip_(clip), texture_(video.texture()), steps_(phase)
    {
    }

    Turn watch()
    {
        video_.play();
        const int first = draw_until(clip_.frames(seconds_to_settle));
        shown_.clear();
        shown_.insert(first);

        const Meter meter;
        const int last = draw_until(first + clip_.frames(seconds_a_turn));
        const double processor_time_a_second = meter.processor_time_a_second();
        video_.stop();
        return {processor_time_a_second,
                100 * static_cast<double>(shown_.size()) / (last - first + 1)};
    }

private:
    /** Returns the number of the next frame that is shown. */
    int draw_until(int number)
    {
        const auto end = Clock::now() + patience;
        while (Clock::now() < end) {
            steps_.wait_for_next();
            video_.render();
            const auto drawn = shown_number(reader_, texture_, picture);
            if (drawn)
                shown_.insert(*drawn);
            if (drawn >= number)
                return *drawn;
        }
        throw std::runtime_error(std::string("the texture does not show the frames of ")
                                 + clip_.file);
    }

    const Video& video_;
    PixelReader& reader_;
    Clip clip_;
    uint64_t texture_;
    HostSteps steps_;
    std::set<int> shown_;
};

/** The same for a clip that is not drawn. */
Turn watch(const BareVideo& video, Clip clip)
{
    const auto wait_for = [&](double seconds) {
        const int pictures = video.pictures() + clip.frames(seconds);
        const auto end = Clock::now() + patience;
        while (video.pictures() < pictures) {
            if (Clock::now() > end)
                throw std::runtime_error(std::string("nothing is decoded of ") + clip.file);
            std::this_thread::sleep_for(HostSteps::length);
        }
    };
    video.play();
    wait_for(seconds_to_settle);
    const Meter meter;
    wait_for(seconds_a_turn);
    const Turn turn{meter.processor_time_a_second(), 100};
    video.stop();
    return turn;
}

/** The players of one clip, and the results of their turns. */
class Contest {
public:
    Contest(Gpu& gpu, Clip clip)
        : clip_(clip),
          reader_(gpu),
          plain_(gpu, picture, url(), Controls::Off),
          controlled_(gpu, picture, url(), Controls::Shown),
          raw_(context(), gpu, picture, url()),
          bare_(context(), url())
    {
    }

    void take_library_turns(bool counts)
    {
        const double phase = even_phase(turns_++ / 2);
        add(Watch(plain_, reader_, clip_, phase).watch(), plain_times_, plain_shares_, counts);
        add(Watch(controlled_, reader_, clip_, phase).watch(), controlled_times_,
            controlled_shares_, counts);
    }

    void take_raw_turns(bool counts)
    {
        const double phase = even_phase(turns_++ / 2);
        add(Watch(raw_, reader_, clip_, phase).watch(), raw_times_, raw_shares_, counts);
        Samples none;
        add(watch(bare_, clip_), bare_times_, none, counts);
    }

    void add_rows(Table& table) const
    {
        const std::string name = std::string("video ") + clip_.name;
        const auto add_row = [&](const char* what, const char* unit, Comparison values) {
            table.add({name + what, unit, std::move(values), false});
        };
        add_row(", CPU time", "ms", {plain_times_, raw_times_});
        add_row(", time with controls", "ms", {controlled_times_, raw_times_});
        add_row(", beside decoding", "ms", {plain_times_, bare_times_});
        add_row(", frames shown", "%", {plain_shares_, raw_shares_, Kind::Rate});
        add_row(", shown with controls", "%", {controlled_shares_, raw_shares_, Kind::Rate});
    }

private:
    static QObject* context() { return static_cast<QObject*>(MARLUNE_CTX); }
    std::string url() const { return clip_url(clip_.file); }

    static void add(Turn turn, Samples& times, Samples& shares, bool counts)
    {
        if (!counts)
            return;
        times.add(turn.processor_time_a_second);
        shares.add(turn.share_shown);
    }

    Clip clip_;
    PixelReader reader_;
    BenchVideo plain_;
    BenchVideo controlled_;
    RawVideo raw_;
    BareVideo bare_;
    int turns_ = 0;
    Samples plain_times_, controlled_times_, raw_times_, bare_times_;
    Samples plain_shares_, controlled_shares_, raw_shares_;
};

}  // namespace

void measure_video(Table& table, Effort effort, Gpu& gpu)
{
    for (const Clip clip : clips) {
        Contest contest(gpu, clip);
        alternate(
            {effort.samples(20), 60s}, [&](bool counts) { contest.take_library_turns(counts); },
            [&](bool counts) { contest.take_raw_turns(counts); }, [] {});
        contest.add_rows(table);
    }
}

}  // namespace marlune::bench
