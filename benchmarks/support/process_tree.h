#pragma once

namespace marlune::bench {

// This process and all below it, the web engine's among them.

/** The processor time that they have used so far, all threads together, in ms. */
double processor_time_of_tree();

/** The memory of all of them in MiB, what they share counted once (PSS). */
double memory_of_tree();

/** The processor time of this process alone, in ms, by a finer clock. */
double processor_time_of_process();

}  // namespace marlune::bench
