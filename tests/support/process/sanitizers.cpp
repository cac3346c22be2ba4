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

// What the sanitizers ask a program, by these names.
extern "C" {

const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

/** Leaks of third parties, each the same few KiB however long a program runs. */
const char* __lsan_default_suppressions()
{
    return
        // The C library loses the path of LOCPATH with each change of the locale.
        "leak:argz_add_sep\n"
        // Its configuration stays for the life of the process.
        "leak:libfontconfig.so\n"
        // Loses its lists of configurations when the engine has looked for one.
        "leak:libGLX_mesa.so\n"
        // Its start and its end each lose a few objects.
        "leak:libQt6WebEngineCore.so\n"
        // A decoder of subtitles keeps the text that it was at when it was closed.
        "leak:libavcodec.so\n"
        // Leaves what it has asked of a display that lacks the extension.
        "leak:libXrandr.so\n"
        // Qt's connection to the display loses its way to the desktop's services at the end.
        "leak:QGenericUnixServices\n";
}

int __lsan_is_turned_off()
{
    return marlune::test::views_are_left_behind;
}

/** Nothing is unloaded: stacks of an unloaded library would be taken for those of another one. */
int dlclose(void*)
{
    return 0;
}
}

    #pragma GCC visibility pop

#endif
