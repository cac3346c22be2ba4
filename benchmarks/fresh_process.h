#pragma once

#include "measures.h"

namespace marlune::bench {

/** Runs this program again with `--sample NAME`, and returns the numbers that it prints. */
Numbers sample_in_fresh_process(const char* name);

/**
 * The work of the fresh process: takes the sample and prints it. Returns false if no sample has
 * that name.
 */
bool print_sample(const char* name);

}  // namespace marlune::bench
