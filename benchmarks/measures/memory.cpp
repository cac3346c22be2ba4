#include "support/fresh_process.h"

#include "ours/view.h"
#include "raw/application.h"
#include "raw/view.h"
#include "support/process/tree.h"

#include <malloc.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace marlune::bench {

namespace {

constexpr Picture picture{1280, 720};
constexpr int view_count = 16;
constexpr int frames_drawn = 4;

struct Memory {
    double resident = 0;
    double proportional = 0;
};

/** Returns the memory of this process in MiB, without free memory that the allocator keeps. */
Memory memory_now()
{
    malloc_trim(0);
    const Memory memory{test::memory_kib(getpid(), {"Rss:"}) / 1024,
                        test::memory_kib(getpid(), {"Pss:"}) / 1024};
    if (memory.resident <= 0 || memory.proportional <= 0)
        throw std::runtime_error("cannot read /proc/self/smaps_rollup");
    return memory;
}

/** Measures the cost of a view beyond the first one, which includes everything that views share. */
template <typename View, typename Make>
Numbers memory_a_view(Make make)
{
    std::vector<std::unique_ptr<View>> views;
    const auto draw_a_while = [&views] {
        for (int frame = 0; frame < frames_drawn; ++frame) {
            wait_for_next_frame();
            for (const auto& view : views)
                view->render();
        }
        return memory_now();
    };

    views.push_back(make());
    const Memory before = draw_a_while();
    for (int i = 0; i < view_count; ++i)
        views.push_back(make());
    const Memory after = draw_a_while();
    return {(after.resident - before.resident) / view_count,
            (after.proportional - before.proportional) / view_count};
}

}  // namespace

Numbers memory_of_library()
{
    Gpu gpu;
    const Library library;
    return memory_a_view<BenchView>([&] { return std::make_unique<BenchView>(gpu, picture); });
}

Numbers memory_of_raw_qt()
{
    const Gpu gpu;
    const RawApplication application;
    return memory_a_view<RawView>(
        [&] { return std::make_unique<RawView>(application.qt_thread(), gpu, picture); });
}

void measure_memory(Table& table, Effort effort)
{
    const auto memory = compare_in_fresh_processes({effort.samples(3), 15s}, "memory");
    table.add({"memory a view, 1280x720, RSS", "MiB", memory.at(0), false});
    table.add({"memory a view, 1280x720, PSS", "MiB", memory.at(1), false});
}

}  // namespace marlune::bench
