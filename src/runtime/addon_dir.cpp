#include "runtime/addon_dir.h"

#include <utility>

namespace marlune {

namespace {

std::string& stored()
{
    static std::string directory;
    return directory;
}

}  // namespace

std::string addon_dir_of(const std::string& project_root)
{
    return project_root + "/addons/webview/";
}

const std::string& addon_dir()
{
    return stored();
}

void set_addon_dir(std::string directory)
{
    stored() = std::move(directory);
}

}  // namespace marlune
