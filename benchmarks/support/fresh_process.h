#pragma once

#include "measures/measures.h"

#include <string>
#include <vector>

namespace marlune::bench {

/** What the fresh process does: takes the sample and prints it. False if no sample has that name. */
bool print_sample(const char* name);

/**
 * Runs this program again and again with `--sample NAME`, and compares the samples "<measure>-library"
 * and "<measure>-raw": one comparison for each number that they consist of.
 */
std::vector<Comparison> compare_in_fresh_processes(Schedule schedule, const std::string& measure);

}  // namespace marlune::bench
