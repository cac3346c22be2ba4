#include "measures/measures.h"

#include "ours/screen.h"
#include "raw/screen.h"
#include "support/host_steps.h"
#include "support/numbered_picture.h"
#include "support/screen_painter.h"

#include <marlune/app.h>

#include <QObject>

#include <set>
#include <stdexcept>

namespace marlune::bench {

namespace {

constexpr Picture picture{960, 540};
constexpr int frames_to_settle = 20;
constexpr int frames_a_turn = 90;
constexpr auto patience = 20s;

/** The results of one side in its turn. */
struct Turn {
    double pictures_a_second = 0;
    double processor_time_a_second = 0;
};

/** Draws sixty times a second, like a host, and counts the frames of the screen that it gets. */
template <typename Screen>
class Watch {
public:
    Watch(const Screen& screen, PixelReader& reader, double phase)
        : screen_(screen), reader_(reader), texture_(screen.texture()), steps_(phase)
    {
    }

    Turn watch()
    {
        screen_.capture(true);
        wait_for_picture();
        draw(frames_to_settle);
        shown_.clear();

        const Meter meter;
        draw(frames_a_turn);
        const Turn turn{static_cast<double>(shown_.size()) / meter.seconds(),
                        meter.processor_time_a_second()};
        screen_.capture(false);
        return turn;
    }

private:
    void wait_for_picture()
    {
        const auto end = Clock::now() + patience;
        while (shown_.empty()) {
            if (Clock::now() > end)
                throw std::runtime_error("the texture does not show the screen");
            draw(1);
        }
    }

    void draw(int frames)
    {
        for (int i = 0; i < frames; ++i) {
            steps_.wait_for_next();
            screen_.render();
            if (const auto number = shown_number(reader_, texture_, picture))
                shown_.insert(*number);
        }
    }

    const Screen& screen_;
    PixelReader& reader_;
    uint64_t texture_;
    HostSteps steps_;
    std::set<int> shown_;
};

}  // namespace

void measure_screen(Table& table, Effort effort, Gpu& gpu)
{
    const ScreenPainter painter;
    PixelReader reader(gpu);
    const BenchScreen library(gpu, picture);
    const RawScreen raw(static_cast<QObject*>(MARLUNE_CTX), gpu, picture);

    Comparison rates{.kind = Kind::Rate};
    Comparison processor_times;
    int turns = 0;
    const auto take_turn = [&](const auto& screen, Samples Comparison::*side, bool counts) {
        const Turn turn = Watch(screen, reader, even_phase(turns++ / 2)).watch();
        if (!counts)
            return;
        (rates.*side).add(turn.pictures_a_second);
        (processor_times.*side).add(turn.processor_time_a_second);
    };
    alternate(
        {effort.samples(20), 40s},
        [&](bool counts) { take_turn(library, &Comparison::library, counts); },
        [&](bool counts) { take_turn(raw, &Comparison::raw, counts); }, [] {});
    table.add({"screen's frames", "1/s", rates, false});
    table.add({"CPU time of screen capture", "ms", processor_times, false});
}

}  // namespace marlune::bench
