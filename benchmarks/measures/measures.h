#pragma once

#include "support/gpu.h"
#include "support/table.h"

#include <algorithm>
#include <vector>

namespace marlune::bench {

/** The number of samples: a tenth of them for quick results. */
struct Effort {
    bool quick = false;

    int samples(int all) const { return quick ? std::max(3, all / 10) : all; }
};

// In the running library's process, with raw Qt on the same Qt thread and device.
void measure_calls(Table& table, Effort effort, Gpu& gpu);
void measure_frames(Table& table, Effort effort, Gpu& gpu);
void measure_views(Table& table, Effort effort, Gpu& gpu);
void measure_web_calls(Table& table, Effort effort, Gpu& gpu);
void measure_web_scheme(Table& table, Effort effort, Gpu& gpu);
void measure_web_frames(Table& table, Effort effort, Gpu& gpu);
void measure_video(Table& table, Effort effort, Gpu& gpu);
void measure_video_calls(Table& table, Effort effort, Gpu& gpu);
void measure_screen(Table& table, Effort effort, Gpu& gpu);

// In a fresh process for each sample.
void measure_start(Table& table, Effort effort);
void measure_memory(Table& table, Effort effort);
void measure_page_start(Table& table, Effort effort);
void measure_page_memory(Table& table, Effort effort);

// The work of such a process: takes its sample, and returns one or more numbers.
using Numbers = std::vector<double>;
Numbers start_of_library();
Numbers start_of_raw_qt();
Numbers memory_of_library();
Numbers memory_of_raw_qt();
Numbers page_start_of_library();
Numbers page_start_of_raw_qt();
Numbers page_memory_of_library();
Numbers page_memory_of_raw_qt();

}  // namespace marlune::bench
