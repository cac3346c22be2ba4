#include "measures/measures.h"

#include "support/web_pages.h"

#include <string>

namespace marlune::bench {

namespace {

constexpr Picture small{256, 256};
constexpr int in_flight = 6;  // the limit of engines per server

struct Fetch {
    const char* row;
    const char* unit;
    const char* path;
    int size;
    int count;
    /** The total that a row's number counts in a round. */
    double amount;
};

constexpr Fetch fetches[] = {
    {"scheme, files of 1 KiB", "1/s", "/1KiB", 1 << 10, 200, 200},
    {"scheme, files of 1 MiB", "MB/s", "/1MiB", 1 << 20, 30, 30 * 1.048576},
    {"scheme, a file of 64 MiB", "MB/s", "/64MiB", 64 << 20, 1, 64 * 1.048576},
};

/** The value per second. */
template <typename Page>
double fetch_files(Page& page, const Fetch& fetch)
{
    page.run("fetch_files('" + std::string(fetch.path) + "', " + std::to_string(fetch.size) + ", "
             + std::to_string(fetch.count) + ", " + std::to_string(in_flight) + ')');
    const double milliseconds = std::stod(page.answers().wait_for_message());
    return fetch.amount / milliseconds * 1000;
}

}  // namespace

void measure_web_scheme(Table& table, Effort effort, Gpu& gpu)
{
    WebPages pages(gpu, small, "files.html");
    for (const Fetch& fetch : fetches) {
        Comparison rates{.kind = Kind::Rate};
        const auto sampled = [&fetch](Samples& samples, auto& page) {
            return [&](bool counts) {
                const double rate = fetch_files(page, fetch);
                if (counts)
                    samples.add(rate);
            };
        };
        alternate({effort.samples(30), 6s}, sampled(rates.library, pages.library),
                  sampled(rates.raw, pages.raw), [] {});
        table.add({fetch.row, fetch.unit, rates, false});
    }
}

}  // namespace marlune::bench
