#include "runtime/platform.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace marlune::platform {

void set_library_directory(const std::string& path)
{
    SetDllDirectoryA(path.c_str());
}

void stay_loaded()
{
    HMODULE ignored = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCSTR>(&stay_loaded), &ignored);
}

void run_at_exit(void (*)(), void (*)(int))
{
    // A library's handlers run after the system has ended all other threads.
}

void end_this_process(int exit_code)
{
    std::fflush(nullptr);
    std::_Exit(exit_code);
}

void run_in_forked_child(void (*)())
{
    // There is no fork.
}

void end_engine_processes()
{
    // They end with the engine.
}

PipeHandle open_debug_pipe()
{
    const HANDLE pipe = CreateFileA(R"(\\.\pipe\webview.debug.sock)", GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    return reinterpret_cast<PipeHandle>(pipe);
}

bool write_debug_pipe(PipeHandle pipe, std::string_view bytes)
{
    DWORD written = 0;
    return WriteFile(reinterpret_cast<HANDLE>(pipe), bytes.data(), static_cast<DWORD>(bytes.size()),
                     &written, nullptr)
        != 0;
}

const ExternalMemory external_memory{"VK_KHR_external_memory_win32",
                                     "vkGetMemoryWin32HandlePropertiesKHR"};

void end_process(std::int64_t id)
{
    const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(id));
    if (!process)
        return;
    TerminateProcess(process, 1);
    CloseHandle(process);
}

long last_error()
{
    return static_cast<long>(GetLastError());
}

}  // namespace marlune::platform
