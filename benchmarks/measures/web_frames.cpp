#include "measures/measures.h"

#include "support/host_steps.h"
#include "support/pixel_reader.h"
#include "support/process_tree.h"
#include "support/web_pages.h"

#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace marlune::bench {

namespace {

constexpr Picture picture{1280, 720};

constexpr int frames_to_settle = 20;
constexpr int frames_a_turn = 60;

// The page's stamp: tenths of a millisecond, in the three bytes of a colour.
constexpr double stamps_a_millisecond = 10;
constexpr double stamps_in_all = 1 << 24;
constexpr double oldest_age =
    2000;  // in ms; a higher value is not an age, but a colour of something else
constexpr int32_t place_of_stamp = 16;

/** The results of one side in its turn. */
struct Turn {
    double frames_a_second = 0;
    double processor_time_a_frame = 0;
    std::vector<double> ages;
};

double now_as_stamp()
{
    const Milliseconds now = std::chrono::system_clock::now().time_since_epoch();
    return std::fmod(now.count() * stamps_a_millisecond, stamps_in_all);
}

double age_in_milliseconds(double now, double stamp)
{
    const double age = std::fmod(now - stamp + stamps_in_all, stamps_in_all) / stamps_a_millisecond;
    if (age > oldest_age)
        throw std::runtime_error("the texture does not show the page's stamp");
    return age;
}

/** Draws sixty times a second, like a host, and tracks the frames of the page. */
template <typename Page>
class Watch {
public:
    /** The steps start at the given phase, relative to the steps since the clock's start. */
    Watch(Page& page, PixelReader& reader, double phase)
        : page_(page), reader_(reader), texture_(page.texture()), steps_(phase)
    {
    }

    Turn watch()
    {
        for (int i = 0; i < frames_to_settle; ++i)
            draw();

        Turn turn;
        const double processor_time = processor_time_of_tree();
        const auto start = Clock::now();
        for (int i = 0; i < frames_a_turn; ++i) {
            const double previous = stamp_;
            const double drawn_at = draw();
            if (stamp_ != previous)
                turn.ages.push_back(age_in_milliseconds(drawn_at, stamp_));
        }
        const std::chrono::duration<double> time = Clock::now() - start;
        if (turn.ages.empty())
            throw std::runtime_error("no frame of the page has reached the texture");
        const auto count = static_cast<double>(turn.ages.size());
        turn.frames_a_second = count / time.count();
        turn.processor_time_a_frame = (processor_time_of_tree() - processor_time) / count;
        return turn;
    }

private:
    /** Returns the time at which the frame's pixels were available, as a stamp. */
    double draw()
    {
        steps_.wait_for_next();
        page_.render();
        const double drawn_at = now_as_stamp();
        const Colour colour = reader_.read(texture_, place_of_stamp, place_of_stamp);
        stamp_ = colour.red * 65536.0 + colour.green * 256.0 + colour.blue;
        return drawn_at;
    }

    Page& page_;
    PixelReader& reader_;
    uint64_t texture_;
    HostSteps steps_;
    double stamp_ = -1;
};

/** The rows of the table, filled after each turn. */
class Turns {
public:
    explicit Turns(Gpu& gpu) : reader_(gpu) {}

    template <typename Page>
    void take(Page& page, Samples Comparison::*side, bool counts)
    {
        page.run("animate(true)");
        const Turn turn = Watch(page, reader_, even_phase(turns_++ / 2)).watch();
        page.run("animate(false)");
        if (!counts)
            return;
        (rates.*side).add(turn.frames_a_second);
        (processor_times.*side).add(turn.processor_time_a_frame);
        (ages.*side).add(turn.ages);
    }

    Comparison rates{.kind = Kind::Rate};
    Comparison processor_times;
    Comparison ages;

private:
    PixelReader reader_;
    int turns_ = 0;
};

}  // namespace

void measure_web_frames(Table& table, Effort effort, Gpu& gpu)
{
    WebPages pages(gpu, picture, "frames.html");
    Turns turns(gpu);
    alternate(
        {effort.samples(30), 75s},
        [&](bool counts) { turns.take(pages.library, &Comparison::library, counts); },
        [&](bool counts) { turns.take(pages.raw, &Comparison::raw, counts); }, [] {});
    table.add({"page's frames, 1280x720", "1/s", turns.rates, false});
    table.add({"CPU time a page's frame", "ms", turns.processor_times, false});
    table.add({"age of a page's frame", "ms", turns.ages});
}

}  // namespace marlune::bench
