#pragma once

#include <cstdint>
#include <string>

namespace marlune::bench {

/** The bytes of a file, which live as long as the program. Without bytes when there is none. */
struct File {
    const uint8_t* bytes = nullptr;
    uint64_t size = 0;
};

/**
 * What both sides' schemes serve, from memory: the pages of the benchmarks, Qt's script for channels,
 * and "/1KiB", "/1MiB" and "/64MiB". For the Qt thread alone.
 */
File find_file(const std::string& path);

}  // namespace marlune::bench
