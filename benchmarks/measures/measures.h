#pragma once

#include "support/gpu.h"
#include "support/table.h"

#include <algorithm>
#include <vector>

namespace marlune::bench {

/** The same measures with a tenth of the samples, for a quick look. */
struct Thoroughness {
    bool quick = false;

    int operator()(int samples) const { return quick ? std::max(3, samples / 10) : samples; }
};

// In the running library's process, with raw Qt on the same Qt thread and device.
void measure_calls(Table& table, Thoroughness much, Gpu& gpu);
void measure_frames(Table& table, Thoroughness much, Gpu& gpu);
void measure_views(Table& table, Thoroughness much, Gpu& gpu);
void measure_web_calls(Table& table, Thoroughness much, Gpu& gpu);
void measure_web_scheme(Table& table, Thoroughness much, Gpu& gpu);
void measure_web_frames(Table& table, Thoroughness much, Gpu& gpu);
void measure_video(Table& table, Thoroughness much, Gpu& gpu);
void measure_video_calls(Table& table, Thoroughness much, Gpu& gpu);
void measure_screen(Table& table, Thoroughness much, Gpu& gpu);

// In a fresh process for each sample.
void measure_start(Table& table, Thoroughness much);
void measure_memory(Table& table, Thoroughness much);
void measure_page_start(Table& table, Thoroughness much);
void measure_page_memory(Table& table, Thoroughness much);

// What such a process does: its sample, as one or more numbers.
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
