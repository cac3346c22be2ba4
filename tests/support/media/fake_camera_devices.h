#pragma once

#include <cstdint>
#include <string>

// The answers of the simulated cameras to the system's calls: see fake_camera_calls.cpp.
namespace marlune::test {

/** The folder that programs list and watch in place of /dev. */
const std::string& camera_nodes();

/** Call these before each listing of that folder and after each start of watching it. */
void note_nodes_are_listed();
void note_nodes_are_watched();

/** Returns a file descriptor, or a negated error number. */
int open_camera(const std::string& node, int flags);

/** True for the files that open_camera() has returned. Takes no lock. */
bool is_camera_file(int file);

void close_camera(int file);

/** Returns 0 or an error number. */
int ask_camera(int file, uint32_t request, void* argument);

}  // namespace marlune::test
