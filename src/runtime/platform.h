#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** Everything that differs between the operating systems. One source file for each. */
namespace marlune::platform {

/** Makes the directory one in which the system looks for shared libraries, where that takes a call. */
void set_library_directory(const std::string& path);

/** Keeps the library loaded until the process ends, whatever the host unloads. */
void stay_loaded();

/**
 * Has two functions run when the process exits: `leave` first of all, where the main thread calls this and
 * exits itself, and `end` before what has been set up until now is taken down. Where the system ends a
 * process's threads before anything else, nothing is left to be ended, and neither is run.
 */
void run_at_exit(void (*leave)(), void (*end)(int exit_code));

/** Ends this process as it is, but for what it has written. */
[[noreturn]] void end_this_process(int exit_code);

/** Has `leave` run in the child of each fork of this process, which has none of its threads. */
void run_in_forked_child(void (*leave)());

/** Ends what the stopped web engine leaves of its processes. */
void end_engine_processes();

using PipeHandle = std::intptr_t;
inline constexpr PipeHandle no_pipe = -1;

/** Connects to the debug pipe for writing only; `no_pipe` on failure, see last_error(). */
PipeHandle open_debug_pipe();

/** Writes all of the bytes, blocking; false on failure, see last_error(). */
bool write_debug_pipe(PipeHandle pipe, std::string_view bytes);

/** What a Vulkan device needs to take memory of another device, and a function that comes with it. */
struct MemorySharing {
    const char* extension;
    const char* function;
};
extern const MemorySharing memory_sharing;

/** Ends a process of this user's at once, by its number, without asking it. */
void end_process(std::int64_t id);

/** The system's code for the failure that this thread met last. */
long last_error();

}  // namespace marlune::platform
