#include "support/library.h"

#include "support/message_log.h"
#include "support/process/processes.h"
#include "support/vulkan/vulkan_host.h"

#include <marlune/app.h>
#include <marlune/mquick_view.h>
#include <marlune/options.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace marlune::test {

namespace {

bool library_is_started = false;

void check_what_was_said()
{
    check_messages();
    check_validation();
}

class Watch : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override { check_what_was_said(); }
};

/**
 * Qt leaks events that its threads have posted to each other and that are pending when the loop
 * ends.
 */
void serve_what_is_posted()
{
    MQuickView().destroy();
}

/**
 * Stops the library and destroys the shared host, in this order: the library works on the host's
 * device.
 */
class Ending : public testing::Environment {
    void TearDown() override
    {
        if (library_is_started) {
            serve_what_is_posted();
            M::destroy();
        }
        release_host();
        check_what_was_said();
    }
};

std::string project_root()
{
    const char* root = std::getenv("MARLUNE_PROJECT_ROOT");
    if (!root)
        throw std::runtime_error("MARLUNE_PROJECT_ROOT is not set");
    return root;
}

}  // namespace

void start_library()
{
    if (std::exchange(library_is_started, true))
        return;
    opts::PATH_PROJECT_ROOT = project_root();
    M::create_app();
}

void start_library_with_device()
{
    host();
    start_library();
}

int run_tests(int argc, char** argv)
{
    return supervise([&] {
        testing::InitGoogleTest(&argc, argv);
        install_message_log();
        testing::AddGlobalTestEnvironment(new Ending);
        testing::UnitTest::GetInstance()->listeners().Append(new Watch);
        return RUN_ALL_TESTS();
    });
}

}  // namespace marlune::test
