// A separate project that uses the installed library and no Qt: prints the version and checks the
// defaults of a facade without a view.

#include <marlune/marlune.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <tuple>

namespace {

int broken_rules = 0;

void check(bool holds, const char* rule)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken rule: %s\n", rule);
    ++broken_rules;
}

void check_facade_without_view()
{
    marlune::MView view;
    check(view.get_resolution() == std::tuple(0u, 0u), "the resolution is (0, 0)");
    check(view.get_refresh_rate() == 60, "the refresh rate is 60");
    check(view.get_mips_count() == 1, "the number of mip levels is 1");
    check(view.get_texture() == 0, "the texture is 0");
    check(view.get_physical_screens().empty(), "no screen is known before the start");
    view.render();
    view.reset();
    view.destroy();
    view.destroy();
}

void check_library_before_start()
{
    check(marlune::MARLUNE == nullptr, "the singleton is null");
    check(!marlune::opts::SANDBOXED, "web pages are not sandboxed by default");
    check(marlune::opts::PATH_PROJECT_ROOT.empty(), "the project root is empty by default");
    marlune::M::destroy();
}

}  // namespace

int main()
{
    const std::string version = marlune::M::get_version_full();
    std::printf("marlune %s\n", version.c_str());
    check(!version.empty(), "the library tells its version");
    check_facade_without_view();
    check_library_before_start();
    return broken_rules == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
