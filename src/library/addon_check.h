#pragma once

#include <string>

namespace marlune {

/**
 * Warns when the add-on directory lacks files of its manifest, or its QtWebEngineProcess.exe may
 * not be executed: messages of Qt and of the web engine come later and seldom name the file. A
 * directory without a manifest, such as the one in a build folder, is not checked.
 */
void warn_of_missing_files(const std::string& addon_dir);

}  // namespace marlune
