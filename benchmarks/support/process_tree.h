#pragma once

namespace marlune::bench {

// This process and all its descendants, including those of the web engine.

/** Returns the CPU time that all their threads have used so far, in ms. */
double processor_time_of_tree();

/** Returns the memory of all of them in MiB; shared memory counts once (PSS). */
double memory_of_tree();

/** Returns the CPU time of this process alone, in ms, by a more precise clock. */
double processor_time_of_process();

}  // namespace marlune::bench
