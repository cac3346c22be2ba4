#include "media/media_view.h"

#include "media/media_part.h"
#include "views/component_files.h"

#include <QIODevice>
#include <QMediaPlayer>
#include <QObject>
#include <QPointer>
#include <QQmlContext>
#include <QThreadPool>

#include <algorithm>
#include <utility>
#include <vector>

namespace marlune {

namespace {

// The fill modes of VideoOutput, and -1, which hosts may also set.
constexpr int lowest_fill_mode = -1;
constexpr int highest_fill_mode = 2;

constexpr int longest_opening = 3'000;  // in ms; the stop of the library waits this long

std::vector<QPointer<QObject>> ending_objects;

class RefusingDevice : public QIODevice {
public:
    bool open(OpenMode) override { return false; }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64) override { return -1; }
};

/**
 * Whether the player opens a file. Such a player cannot be deleted before the system has answered,
 * whereas Qt aborts network access.
 */
bool is_opening_file(const QObject* object)
{
    const auto* const player = qobject_cast<const QMediaPlayer*>(object);
    if (!player || player->mediaStatus() != QMediaPlayer::LoadingMedia)
        return false;
    return player->source().isLocalFile() || player->source().isRelative();
}

}  // namespace

void end_when_loaded(QMediaPlayer* player)
{
    player->setParent(nullptr);
    player->stop();
    player->setVideoSink(nullptr);
    player->setAudioOutput(nullptr);
    // The player blocks a thread of the pool. Another thread replaces it, since otherwise the pool
    // would soon have none for other sources.
    QThreadPool::globalInstance()->releaseThread();
    const auto end = [player] {
        player->deleteLater();
        QThreadPool::globalInstance()->reserveThread();
    };
    QObject::connect(player, &QMediaPlayer::mediaStatusChanged, player, end,
                     Qt::SingleShotConnection);
}

QIODevice* refusing_device()
{
    // Never destroyed: threads may still use it.
    static auto* const device = new RefusingDevice;
    return device;
}

void delete_at_shutdown(QObject* object)
{
    std::erase_if(ending_objects, [](const QPointer<QObject>& former) { return !former; });
    ending_objects.emplace_back(object);
}

void prepare_media_context(QQmlContext* root_context, QObject* view)
{
    root_context->setContextProperty(QStringLiteral("ctx"), view);
    publish_module(QStringLiteral("Multimedia"));
}

uint accepted_fill_mode(uint fill_mode)
{
    const int mode = static_cast<int>(fill_mode);
    return mode >= lowest_fill_mode && mode <= highest_fill_mode ? fill_mode : 0;
}

namespace media_part {

void close_players()
{
    auto objects = std::exchange(ending_objects, {});
    const auto rest = std::ranges::partition(
        objects, [](const QPointer<QObject>& object) { return is_opening_file(object); });
    for (const QPointer<QObject>& object : rest)
        delete object;
    objects.erase(rest.begin(), rest.end());
    if (objects.empty() || !QThreadPool::globalInstance()->waitForDone(longest_opening))
        return;
    for (const QPointer<QObject>& object : objects)
        delete object;
}

}  // namespace media_part

}  // namespace marlune
