#pragma once

#include "support/samples.h"

#include <string>
#include <vector>

namespace marlune::bench {

struct Row {
    std::string measure;
    const char* unit;
    Comparison values;
    /** Whether there are enough samples for the slowest hundredth. */
    bool tail = true;
};

/** The only output of the benchmarks on the standard output. */
class Table {
public:
    void add(Row row);
    bool empty() const { return rows_.empty(); }
    void print() const;

private:
    std::vector<Row> rows_;
};

}  // namespace marlune::bench
