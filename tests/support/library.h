#pragma once

namespace marlune::test {

/**
 * Starts the library, the first time that it is called, with the options as they stand and the
 * project root that the environment names. It is stopped after the last test of the process.
 */
void start_library();

/**
 * The same, once there is the device that the views are drawn on: the engine looks into the Vulkan loader
 * as soon as it has been started, and the loader does not always stand that beside the making of a device.
 */
void start_library_with_device();

/**
 * Runs the tests of this program in a supervised process. Beyond its assertions a test fails for a
 * Qt message that it does not expect and for any message of the Vulkan validation layer; the program
 * fails for a process that it leaves behind.
 */
int run_tests(int argc, char** argv);

}  // namespace marlune::test
