#include "media/media_source.h"

#include <QDir>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>
#include <utility>

namespace marlune {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 250ms;

// On Windows, the drive letter of a path looks like a scheme of this length.
constexpr qsizetype longest_drive = 1;

FileKind look_at(const std::filesystem::path& path)
{
    using std::filesystem::file_type;
    std::error_code error;
    switch (std::filesystem::status(path, error).type()) {
    case file_type::regular:
    case file_type::block:
        return FileKind::File;
    case file_type::not_found:
    case file_type::none:
    case file_type::unknown:
        return FileKind::Missing;
    default:
        return FileKind::Other;
    }
}

bool is_plain_path(const QUrl& url)
{
    return url.scheme().size() <= longest_drive;
}

}  // namespace

FileKind kind_of(const QString& path)
{
    std::promise<FileKind> promise;
    std::future<FileKind> kind = promise.get_future();
    const auto look = [path = std::filesystem::path(path.toStdU16String())](
                          std::promise<FileKind> answer) { answer.set_value(look_at(path)); };
    try {
        std::thread(look, std::move(promise)).detach();
    } catch (const std::system_error&) {
        return FileKind::Unknown;
    }
    return kind.wait_for(patience) == std::future_status::ready ? kind.get() : FileKind::Unknown;
}

MediaSource to_source(const QString& text)
{
    const QUrl url(text);
    if (url.isLocalFile())
        return {url, kind_of(url.toLocalFile()) == FileKind::Other};
    if (text.isEmpty() || !is_plain_path(url))
        return {url};

    const QString path = QDir().absoluteFilePath(text);
    const FileKind kind = kind_of(path);
    // Qt would interpret a percent sign as the start of an escape sequence, and would block on a
    // network share.
    const bool has_to_be_url = text.contains(u'%') && kind == FileKind::File;
    if (has_to_be_url || kind == FileKind::Unknown)
        return {QUrl::fromLocalFile(path)};
    return {url, kind == FileKind::Other};
}

}  // namespace marlune
