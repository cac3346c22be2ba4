#include "support/files.h"

#include <QFile>

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>

namespace marlune::bench {

namespace {

using Bytes = std::string;

Bytes stored(const char* name)
{
    QFile file{QLatin1StringView(name)};
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(std::string("the program does not hold ") + name);
    return file.readAll().toStdString();
}

/** Has no pattern, so that nothing on the way can compress it. */
Bytes noise(std::size_t size)
{
    Bytes bytes(size, '\0');
    uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

const std::map<std::string, Bytes>& files()
{
    static const std::map<std::string, Bytes> files{
        {"/calls.html", stored(":/Pages/calls.html")},
        {"/connect.js", stored(":/Pages/connect.js")},
        {"/files.html", stored(":/Pages/files.html")},
        {"/frames.html", stored(":/Pages/frames.html")},
        {"/qwebchannel.js", stored(":/qtwebchannel/qwebchannel.js")},
        {"/1KiB", noise(std::size_t{1} << 10)},
        {"/1MiB", noise(std::size_t{1} << 20)},
        {"/64MiB", noise(std::size_t{64} << 20)},
    };
    return files;
}

}  // namespace

File find_file(const std::string& path)
{
    const auto found = files().find(path);
    if (found == files().end())
        return {};
    return {reinterpret_cast<const uint8_t*>(found->second.data()), found->second.size()};
}

}  // namespace marlune::bench
