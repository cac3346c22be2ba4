#include "measures/measures.h"

#include "support/web_pages.h"

#include <string>
#include <vector>

namespace marlune::bench {

namespace {

constexpr Picture small{256, 256};

/**
 * Measures the time from each call's arrival to the next one's, which the page makes when it has
 * the result of the previous one: a complete round trip, by a more precise clock than pages have.
 */
template <typename Page>
std::vector<double> one_after_the_other(Page& page)
{
    constexpr int count = 200;
    page.run("one_after_the_other(" + std::to_string(count) + ')');
    const auto arrivals = page.answers().wait_for_calls(count);
    expect_message(page, "done");

    std::vector<double> times;
    for (std::size_t i = 1; i < arrivals.size(); ++i)
        times.push_back(Microseconds(arrivals[i] - arrivals[i - 1]).count());
    return times;
}

/** Measures calls per second. */
template <typename Page>
std::vector<double> all_at_once(Page& page)
{
    constexpr int count = 2000;
    page.run("all_at_once(" + std::to_string(count) + ", 100)");
    const auto arrivals = page.answers().wait_for_calls(count);
    expect_message(page, "done");
    const std::chrono::duration<double> time = arrivals.back() - arrivals.front();
    return {(count - 1) / time.count()};
}

/** Measures signals per second, until the page has counted the last one. */
template <typename Page>
std::vector<double> signals_in_a_row(Page& page)
{
    constexpr int count = 1000;
    page.run("count_ticks(" + std::to_string(count) + ')');
    expect_message(page, "ready");
    const auto start = Clock::now();
    for (int i = 0; i < count; ++i)
        page.emit_tick(i);
    const std::chrono::duration<double> time = page.answers().wait_for_calls(1).front() - start;
    return {count / time.count()};
}

/** Measures the time from a property's change to the call of the page that has received it. */
template <typename Page>
std::vector<double> changes(Page& page)
{
    constexpr int count = 50;
    static int number = 0;
    page.run("answer_numbers(true)");
    expect_message(page, "ready");
    std::vector<double> times;
    for (int i = 0; i < count; ++i) {
        const auto start = Clock::now();
        page.set_number(++number);
        times.push_back(Microseconds(page.answers().wait_for_calls(1).front() - start).count());
    }
    return times;
}

auto sampled(Samples& samples, auto measure)
{
    return [&samples, measure](bool counts) {
        const std::vector<double> values = measure();
        if (counts)
            samples.add(values);
    };
}

}  // namespace

void measure_web_calls(Table& table, Effort effort, Gpu& gpu)
{
    WebPages pages(gpu, small, "calls.html");
    const auto compare = [&](Kind kind, auto measure) {
        Comparison values{.kind = kind};
        alternate({effort.samples(30), 6s},
                  sampled(values.library, [&] { return measure(pages.library); }),
                  sampled(values.raw, [&] { return measure(pages.raw); }), [] {});
        return values;
    };
    table.add({"page's call and its result", "us",
               compare(Kind::Cost, [](auto& page) { return one_after_the_other(page); })});
    table.add({"page's calls, 100 under way", "1/s",
               compare(Kind::Rate, [](auto& page) { return all_at_once(page); }), false});
    table.add({"signals to a page", "1/s",
               compare(Kind::Rate, [](auto& page) { return signals_in_a_row(page); }), false});
    table.add({"property change, page's answer", "us",
               compare(Kind::Cost, [](auto& page) { return changes(page); })});
}

}  // namespace marlune::bench
