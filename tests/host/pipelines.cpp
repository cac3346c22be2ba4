// Compiled pipelines, which one run of the game keeps for the next.

#include "support/host_view.h"
#include "support/vulkan/driver_layer.h"

#include <marlune/mweb_view.h>

#include <gtest/gtest.h>

#include <QtCore/qstandardpaths.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace marlune::test {

namespace {

using std::filesystem::path;

constexpr const char* FILE_NAME = "marlune_pipelines_vulkan";

std::string content(const path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

/** Creates a view, draws a frame, and destroys the view. */
void show(const std::string& scene, VulkanHost& host = test::host())
{
    HostView view({512, 256}, host);
    ASSERT_TRUE(view.load(scene));
    view.draw_frame();
}

class Pipelines : public testing::Test {
protected:
    Pipelines() { choose(folder); }

    static void choose(const path& folder)
    {
        start_library();
        MWebView view;
        view.set_storage_path(folder.string());
        view.destroy();
    }

    const path folder = std::filesystem::temp_directory_path() / "storage";
    const path file = folder / FILE_NAME;
};

TEST(PipelinesByDefault, are_in_the_users_folder_for_caches)
{
    HostView starter;
    const auto caches = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    const path file = path(caches.toStdString()) / FILE_NAME;
    std::filesystem::remove(file);
    show("Quadrants");
    EXPECT_FALSE(content(file).empty());
}

TEST_F(Pipelines, are_kept_in_the_storage_path_when_a_view_is_destroyed)
{
    std::filesystem::remove_all(folder);
    show("Quadrants");
    EXPECT_FALSE(content(file).empty());
}

TEST_F(Pipelines, of_earlier_views_are_passed_to_the_driver)
{
    driver_layer::announce();
    VulkanHost host({VulkanHost::VALIDATION_LAYER, driver_layer::NAME}, 1);
    std::filesystem::remove_all(folder);
    show("Quadrants", host);
    EXPECT_EQ(driver_layer::pipeline_cache_data(), 0u);
    show("Quadrants", host);
    EXPECT_GT(driver_layer::pipeline_cache_data(), 0u);
}

TEST_F(Pipelines, of_a_damaged_file_are_ignored)
{
    std::filesystem::create_directories(folder);
    for (const std::string& damaged :
         {std::string(), std::string("x"), std::string(100'000, 'x')}) {
        std::ofstream(file, std::ios::binary) << damaged;
        show("Quadrants");
        EXPECT_NE(content(file), damaged);
    }
}

TEST_F(Pipelines, are_not_kept_where_no_file_can_be_written)
{
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "no folder";
    show("Quadrants");
    EXPECT_EQ(content(folder), "no folder");
    std::filesystem::remove(folder);
}

}  // namespace

}  // namespace marlune::test
