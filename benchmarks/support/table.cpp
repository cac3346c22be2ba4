#include "support/table.h"

#include <cstdio>
#include <utility>

namespace marlune::bench {

namespace {

constexpr double tail_share = 0.99;

void print_row(const Row& row)
{
    const Samples& library = row.values.library;
    const Samples& raw = row.values.raw;
    std::printf("%-34s %4s %9.2f %9.2f %6.3f %6.3f", row.measure.c_str(), row.unit,
                library.median(), raw.median(), row.values.ratio(), row.values.uncertainty());
    if (row.tail)
        std::printf(" %11.2f %9.2f", library.quantile(tail_share), raw.quantile(tail_share));
    std::printf("\n");
}

}  // namespace

void Table::add(Row row)
{
    // The table is printed at the end; until then, this reports the progress.
    std::fprintf(stderr, "%s: %.3f\n", row.measure.c_str(), row.values.ratio());
    rows_.push_back(std::move(row));
}

void Table::print() const
{
    std::printf("%-34s %4s %9s %9s %6s %6s %11s %9s\n", "measure (medians)", "unit", "library",
                "raw Qt", "ratio", "+-", "library p99", "raw p99");
    for (const Row& row : rows_)
        print_row(row);
}

}  // namespace marlune::bench
