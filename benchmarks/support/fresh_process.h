#pragma once

#include "measures/measures.h"

namespace marlune::bench {

/** Runs this program again with `--sample NAME`, and returns the numbers that it prints. */
Numbers sample_in_fresh_process(const char* name);

/** What the fresh process does: takes the sample and prints it. False if no sample has that name. */
bool print_sample(const char* name);

}  // namespace marlune::bench
