#include "support/fresh_process.h"

#include "ours/page.h"
#include "ours/view.h"
#include "raw/application.h"
#include "raw/page.h"
#include "support/pixel_reader.h"
#include "support/process_tree.h"

#include <malloc.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace marlune::bench {

namespace {

constexpr Picture picture{1280, 720};
constexpr int view_count = 6;
constexpr int frames_to_settle = 60;
constexpr auto patience = 30s;

const std::string plain_page = "data:text/html,<body style='background:%23204060'>Page";
constexpr Colour colour_of_page{0x20, 0x40, 0x60, 0xff};

/** Draws like a host until the texture shows the page. */
template <typename Page>
void draw_until_shown(Page& page, PixelReader& reader)
{
    const auto end = Clock::now() + patience;
    while (reader.read(page.texture(), 0, 0) != colour_of_page) {
        if (Clock::now() > end)
            throw std::runtime_error("a page has not reached the texture");
        wait_for_next_frame();
        page.render();
    }
}

/** Measures the cost of a view with a page beyond the first one, in all processes. */
template <typename Page, typename Make>
Numbers memory_a_page(const Gpu& gpu, Make make)
{
    PixelReader reader(gpu);
    std::vector<std::unique_ptr<Page>> pages;
    const auto memory_with = [&](std::size_t count) {
        while (pages.size() < count) {
            pages.push_back(make());
            draw_until_shown(*pages.back(), reader);
        }
        for (int frame = 0; frame < frames_to_settle; ++frame) {
            wait_for_next_frame();
            for (const auto& page : pages)
                page->render();
        }
        malloc_trim(0);
        return memory_of_tree();
    };
    const double before = memory_with(1);
    return {(memory_with(1 + view_count) - before) / view_count};
}

}  // namespace

Numbers page_start_of_library()
{
    Gpu gpu;
    PixelReader reader(gpu);
    const auto start = Clock::now();
    const Library library;
    BenchPage page(gpu, picture, plain_page);
    draw_until_shown(page, reader);
    return {Milliseconds(Clock::now() - start).count()};
}

Numbers page_start_of_raw_qt()
{
    const Gpu gpu;
    PixelReader reader(gpu);
    const auto start = Clock::now();
    const RawApplication application;
    RawPage page(application.qt_thread(), gpu, picture, plain_page);
    draw_until_shown(page, reader);
    return {Milliseconds(Clock::now() - start).count()};
}

Numbers page_memory_of_library()
{
    Gpu gpu;
    const Library library;
    return memory_a_page<BenchPage>(
        gpu, [&] { return std::make_unique<BenchPage>(gpu, picture, plain_page); });
}

Numbers page_memory_of_raw_qt()
{
    const Gpu gpu;
    const RawApplication application;
    return memory_a_page<RawPage>(gpu, [&] {
        return std::make_unique<RawPage>(application.qt_thread(), gpu, picture, plain_page);
    });
}

void measure_page_start(Table& table, Effort effort)
{
    const auto times = compare_in_fresh_processes({effort.samples(10), 25s}, "page-start");
    table.add({"start to the first drawn page", "ms", times.at(0), false});
}

void measure_page_memory(Table& table, Effort effort)
{
    const auto memory = compare_in_fresh_processes({effort.samples(3), 25s}, "page-memory");
    table.add({"memory a web view, 1280x720, PSS", "MiB", memory.at(0), false});
}

}  // namespace marlune::bench
