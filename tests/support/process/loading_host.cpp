// A host that is not linked to the library: it loads, runs and unloads it, as game engines do.
// usage: marlune-loading-host LIBRARY PROJECT_ROOT

#include <cstdio>
#include <cstdlib>
#include <string>

#include <dlfcn.h>

namespace {

void* symbol(void* library, const char* name)
{
    void* const found = ::dlsym(library, name);
    if (found)
        return found;
    std::fprintf(stderr, "%s\n", ::dlerror());
    std::exit(EXIT_FAILURE);
}

void call(void* library, const char* name)
{
    reinterpret_cast<void (*)()>(symbol(library, name))();
}

}  // namespace

int main(int argc, char** argv)
{
    void* const library = argc == 3 ? ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (!library) {
        std::fprintf(stderr, "%s\n", argc == 3 ? ::dlerror() : "usage: LIBRARY PROJECT_ROOT");
        return EXIT_FAILURE;
    }
    *static_cast<std::string*>(symbol(library, "_ZN7marlune4opts17PATH_PROJECT_ROOTB5cxx11E")) =
        argv[2];
    call(library, "_ZN7marlune1M10create_appEv");
    call(library, "_ZN7marlune1M30ensure_qt_eventloop_is_runningEv");
    call(library, "_ZN7marlune1M7destroyEv");
    ::dlclose(library);
    return EXIT_SUCCESS;
}
