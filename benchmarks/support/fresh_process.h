#pragma once

#include "measures/measures.h"

#include <string>
#include <vector>

namespace marlune::bench {

/**
 * The work of the fresh process: takes the sample and prints it. False if there is no such sample.
 */
bool print_sample(const char* name);

/**
 * Runs this program repeatedly with `--sample NAME`, and compares the samples "<measure>-library"
 * and "<measure>-raw": one comparison for each number that they consist of.
 */
std::vector<Comparison> compare_in_fresh_processes(Schedule schedule, const std::string& measure);

}  // namespace marlune::bench
