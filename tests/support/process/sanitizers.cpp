#include "support/process/sanitizers.h"

#include <atomic>

namespace marlune::test {

namespace {

std::atomic<bool> views_are_left_behind = false;

}  // namespace

void leave_views_behind()
{
    views_are_left_behind = true;
}

}  // namespace marlune::test

#if defined(__SANITIZE_ADDRESS__)

    #pragma GCC visibility push(default)

// Functions that the sanitizers call by these names.
extern "C" {

const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

/** Leaks in third-party code; each is the same few KiB however long a program runs. */
const char* __lsan_default_suppressions()
{
    return
        // The C library leaks the path of LOCPATH with each change of the locale.
        "leak:argz_add_sep\n"
        // Fontconfig keeps its configuration until the process ends.
        "leak:libfontconfig.so\n"
        // Mesa leaks its lists of configurations after the web engine has searched them.
        "leak:libGLX_mesa.so\n"
        // Qt WebEngine leaks a few objects when it starts and when it ends.
        "leak:libQt6WebEngineCore.so\n"
        // A decoder of subtitles leaks the text that was current when it was closed.
        "leak:libavcodec.so\n"
        // Leaks its query of a display that lacks the extension.
        "leak:libXrandr.so\n"
        // Qt's connection to the display leaks its object for the desktop's services at the end.
        "leak:QGenericUnixServices\n";
}

int __lsan_is_turned_off()
{
    return marlune::test::views_are_left_behind;
}

/** Unloads nothing: the sanitizers would attribute stacks of an unloaded library to another one. */
int dlclose(void*)
{
    return 0;
}
}

    #pragma GCC visibility pop

#endif
