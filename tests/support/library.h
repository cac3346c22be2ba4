#pragma once

namespace marlune::test {

/**
 * The first call starts the library, with the current options and the project root that the
 * environment names. The library is stopped after the last test of the process.
 */
void start_library();

/**
 * The same, but creates the shared device first: the web engine uses the Vulkan loader as soon as
 * it has started, and the loader sometimes fails if another thread creates a device at that time.
 */
void start_library_with_device();

/**
 * Runs the tests of this program in a supervised process. Apart from its assertions, a test fails
 * if Qt writes a message that the test does not expect, or if the Vulkan validation layer writes
 * any message. The program fails if it leaves a process behind.
 */
int run_tests(int argc, char** argv);

}  // namespace marlune::test
