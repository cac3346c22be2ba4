#pragma once

#include <cstdint>
#include <string>

namespace marlune::bench {

/**
 * The bytes of a file, which stay valid as long as the program runs. Empty if there is no such
 * file.
 */
struct File {
    const uint8_t* bytes = nullptr;
    uint64_t size = 0;
};

/**
 * The files that both sides' schemes serve, from memory: the pages of the benchmarks, Qt's script
 * for channels, and "/1KiB", "/1MiB" and "/64MiB". Only on the Qt thread.
 */
File find_file(const std::string& path);

}  // namespace marlune::bench
