// The system's functions through which a program sees cameras, placed before those of the C
// library. The dynamic linker finds them first because it searches a program's own libraries in
// order, and the C library is last.

#include "support/media/fake_camera_devices.h"

#include <dlfcn.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <string_view>

// Declared under other names: the C library's headers declare the real ones with attributes and
// overloads of their own.
#define MARLUNE_STANDS_FOR(name) __asm__(name) __attribute__((visibility("default")))

extern "C" {
int fake_open(const char* path, int flags, ...) MARLUNE_STANDS_FOR("open");
int fake_open64(const char* path, int flags, ...) MARLUNE_STANDS_FOR("open64");
int fake_close(int file) MARLUNE_STANDS_FOR("close");
int fake_ioctl(int file, unsigned long request, ...) MARLUNE_STANDS_FOR("ioctl");
void* fake_opendir(const char* path) MARLUNE_STANDS_FOR("opendir");
int fake_inotify_add_watch(int watcher, const char* path, uint32_t mask)
    MARLUNE_STANDS_FOR("inotify_add_watch");
}

namespace {

using namespace marlune::test;

template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool is_device_folder(const char* path)
{
    const std::string_view text = path ? path : "";
    return text == "/dev" || text == "/dev/";
}

bool is_camera_node(const char* path)
{
    return std::string_view(path ? path : "").starts_with("/dev/video");
}

int return_or_set_errno(int result)
{
    if (result >= 0)
        return result;
    errno = -result;
    return -1;
}

}  // namespace

int fake_open(const char* path, int flags, ...)
{
    static const auto real = next<int(const char*, int, ...)>("open");
    if (is_camera_node(path))
        return return_or_set_errno(open_camera(path, flags));
    // The mode is passed on even if the caller gave none, as the C library itself does.
    va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return real(path, flags, mode);
}

int fake_open64(const char* path, int flags, ...)
{
    static const auto real = next<int(const char*, int, ...)>("open64");
    if (is_camera_node(path))
        return return_or_set_errno(open_camera(path, flags));
    va_list rest;
    va_start(rest, flags);
    const auto mode = va_arg(rest, mode_t);
    va_end(rest);
    return real(path, flags, mode);
}

int fake_close(int file)
{
    static const auto real = next<int(int)>("close");
    if (is_camera_file(file))
        close_camera(file);
    return real(file);
}

int fake_ioctl(int file, unsigned long request, ...)
{
    static const auto real = next<int(int, unsigned long, ...)>("ioctl");
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    // Only 32 bits of a request are significant; callers may set the others to anything.
    if (is_camera_file(file))
        return return_or_set_errno(-ask_camera(file, uint32_t(request), argument));
    return real(file, request, argument);
}

void* fake_opendir(const char* path)
{
    static const auto real = next<void*(const char*)>("opendir");
    if (!is_device_folder(path))
        return real(path);
    note_nodes_are_listed();
    return real(camera_nodes().c_str());
}

int fake_inotify_add_watch(int watcher, const char* path, uint32_t mask)
{
    static const auto real = next<int(int, const char*, uint32_t)>("inotify_add_watch");
    if (!is_device_folder(path))
        return real(watcher, path, mask);
    const int watch = real(watcher, camera_nodes().c_str(), mask);
    note_nodes_are_watched();
    return watch;
}
