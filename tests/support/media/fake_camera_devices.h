#pragma once

#include <cstdint>
#include <string>

// What the fake cameras answer to the system's calls: see fake_camera_calls.cpp.
namespace marlune::test {

/** The folder that is listed and watched in place of /dev. */
const std::string& camera_nodes();

/** To be called before each listing of that folder and after each start of watching it. */
void note_nodes_are_listed();
void note_nodes_are_watched();

/** Returns a file, or minus the number of an error. */
int open_camera(const std::string& node, int flags);

/** True for files that open_camera() has returned. Takes no lock. */
bool is_camera_file(int file);

void close_camera(int file);

/** Returns 0 or the number of an error. */
int ask_camera(int file, uint32_t request, void* argument);

}  // namespace marlune::test
