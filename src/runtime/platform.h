#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** All that differs between operating systems, in one source file for each system. */
namespace marlune::platform {

/** Adds the directory to those in which the system looks for shared libraries, if that takes a
 * call. */
void set_library_directory(const std::string& path);

/** Keeps the library loaded until the process ends, even if the host unloads it. */
void stay_loaded();

/**
 * Registers two functions for the exit of the process. `leave` runs before all other exit handlers,
 * if the main thread registers it and is the one that exits; `end` runs before what has been set up
 * so far is taken down. On systems that end all threads of a process first, neither runs.
 */
void run_at_exit(void (*leave)(), void (*end)(int exit_code));

/** Ends this process at once, without exit handlers, after flushing its output. */
[[noreturn]] void end_this_process(int exit_code);

/** Has `leave` run in each forked child, which has none of the other threads. */
void run_in_forked_child(void (*leave)());

/** Ends the processes that the stopped web engine leaves behind. */
void end_engine_processes();

using PipeHandle = std::intptr_t;
inline constexpr PipeHandle no_pipe = -1;

/** Connects to the debug pipe for writing only; `no_pipe` on failure, see last_error(). */
PipeHandle open_debug_pipe();

/** Writes all of the bytes, blocking; false on failure, see last_error(). */
bool write_debug_pipe(PipeHandle pipe, std::string_view bytes);

/** The Vulkan extension by which a device imports memory of another one, and a function of it. */
struct ExternalMemory {
    const char* extension;
    const char* function;
};
extern const ExternalMemory external_memory;

/** Kills a process of this user. */
void end_process(std::int64_t id);

/** The system's error code of this thread's last failed call. */
long last_error();

}  // namespace marlune::platform
