#pragma once

#include <string>

namespace marlune {

/**
 * Warns where the add-on directory is not there, or lacks files of its manifest, and goes on: Qt's own
 * messages, and those of the web engine, come later and seldom name the file. A directory without a
 * manifest, as a build lays out for itself, is taken for whole. Warns too of a process of the web engine
 * that may not be executed.
 */
void warn_of_missing_files(const std::string& addon_dir);

}  // namespace marlune
