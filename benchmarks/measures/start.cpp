#include "support/fresh_process.h"

#include "ours/view.h"
#include "raw/application.h"
#include "raw/view.h"

namespace marlune::bench {

namespace {

constexpr Picture picture{1280, 720};

Numbers since(Clock::time_point start)
{
    return {Milliseconds(Clock::now() - start).count()};
}

auto sampled(Samples& samples, const char* name)
{
    return [&samples, name](bool counts) {
        const double time = sample_in_fresh_process(name).front();
        if (counts)
            samples.add(time);
    };
}

}  // namespace

Numbers start_of_library()
{
    Gpu gpu;
    const auto start = Clock::now();
    const Library library;
    const BenchView view(gpu, picture);
    return since(start);
}

Numbers start_of_raw_qt()
{
    const Gpu gpu;
    const auto start = Clock::now();
    const RawApplication application;
    const RawView view(application.qt_thread(), gpu, picture);
    return since(start);
}

void measure_start(Table& table, Effort effort)
{
    Comparison times;
    alternate({effort.samples(10), 15s}, sampled(times.library, "start-library"),
              sampled(times.raw, "start-raw"), [] {});
    table.add({"start to the first drawn frame", "ms", times, false});
}

}  // namespace marlune::bench
