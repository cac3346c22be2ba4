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
    const auto times = compare_in_fresh_processes({effort.samples(10), 15s}, "start");
    table.add({"start to the first drawn frame", "ms", times.at(0), false});
}

}  // namespace marlune::bench
