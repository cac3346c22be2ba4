#include "raw/video.h"

#include "raw/call.h"
#include "raw/scene.h"

#include <QAudioOutput>
#include <QMediaMetaData>
#include <QMediaPlayer>
#include <QMetaObject>
#include <QUrl>
#include <QVideoFrame>
#include <QVideoSink>

namespace marlune::bench {

namespace {

constexpr auto component = "qrc:/Bench/RawVideo.qml";

QMediaPlayer* make_player(const std::string& clip)
{
    auto* const player = new QMediaPlayer;
    player->setAudioOutput(new QAudioOutput(player));
    player->setLoops(QMediaPlayer::Infinite);
    player->setSource(QUrl(QString::fromStdString(clip)));
    return player;
}

std::map<std::string, std::string> texts_of(const QMediaMetaData& metadata)
{
    std::map<std::string, std::string> texts;
    for (const QMediaMetaData::Key key : metadata.keys())
        texts[QMediaMetaData::metaDataKeyToString(key).toStdString()] =
            metadata.value(key).toString().toStdString();
    return texts;
}

}  // namespace

RawPlayer::RawPlayer(QObject* qt_thread, const std::string& clip) : qt_thread_(qt_thread)
{
    call(qt_thread_, [&] { player_ = make_player(clip); });
}

RawPlayer::~RawPlayer()
{
    call(qt_thread_, [player = player_] { delete player; });
}

void RawPlayer::set_sink(QVideoSink* sink)
{
    call(player_, [player = player_, sink] { player->setVideoSink(sink); });
}

void RawPlayer::play() const
{
    call(player_, [player = player_] { player->play(); });
}

void RawPlayer::stop() const
{
    call(player_, [player = player_] { player->stop(); });
}

uint64_t RawPlayer::position() const
{
    return static_cast<uint64_t>(call(player_, [player = player_] { return player->position(); }));
}

std::map<std::string, std::string> RawPlayer::metadata() const
{
    return call(player_, [player = player_] { return texts_of(player->metaData()); });
}

RawVideo::RawVideo(QObject* qt_thread, const Gpu& gpu, Picture picture, const std::string& clip)
    : player_(qt_thread, clip)
{
    QVideoSink* sink = nullptr;
    const auto set_up = [&] {
        scene_ = new RawScene(gpu, picture, component);
        texture_ = scene_->texture();
        sink = scene_->video_sink();
    };
    call(qt_thread, set_up);
    player_.set_sink(sink);
}

RawVideo::~RawVideo()
{
    player_.set_sink(nullptr);
    call(scene_, [scene = scene_] { scene->deleteLater(); });
}

void RawVideo::render() const
{
    call(scene_, [scene = scene_] { scene->render(); });
}

BareVideo::BareVideo(QObject* qt_thread, const std::string& clip) : player_(qt_thread, clip)
{
    const auto set_up = [this] {
        sink_ = new QVideoSink;
        QObject::connect(sink_, &QVideoSink::videoFrameChanged, sink_,
                         [this](const QVideoFrame& frame) { pictures_ += frame.isValid(); });
    };
    call(qt_thread, set_up);
    player_.set_sink(sink_);
}

BareVideo::~BareVideo()
{
    player_.set_sink(nullptr);
    call(sink_, [sink = sink_] { sink->deleteLater(); });
}

}  // namespace marlune::bench
