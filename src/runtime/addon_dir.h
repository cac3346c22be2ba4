#pragma once

#include <string>

namespace marlune {

/** "/addons/webview/" under that project root, with its slash at the end. */
std::string addon_dir_of(const std::string& project_root);

/** The directory of the project root that was set when the library started; "" before. */
const std::string& addon_dir();

/** Called by the start, before any view exists. */
void set_addon_dir(std::string directory);

}  // namespace marlune
