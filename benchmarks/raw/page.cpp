#include "raw/page.h"

#include "raw/call.h"
#include "raw/scene.h"
#include "raw/service.h"

#include <QMetaObject>
#include <QQuickItem>
#include <QUrl>
#include <QWebChannel>

namespace marlune::bench {

namespace {

constexpr auto queued = Qt::QueuedConnection;
constexpr auto component = "qrc:/Bench/RawPage.qml";

}  // namespace

RawPage::RawPage(QObject* qt_thread, const Gpu& gpu, Picture picture, const std::string& url)
    : qt_thread_(qt_thread)
{
    call(qt_thread_, [&] { set_up(gpu, picture, url); });
}

void RawPage::set_up(const Gpu& gpu, Picture picture, const std::string& url)
{
    service_ = new RawService(answers_);
    const QVariantMap properties{
        {QStringLiteral("service"), QVariant::fromValue(service_)},
        {QStringLiteral("url"), QUrl(QString::fromStdString(url))},
    };
    scene_ = new RawScene(gpu, picture, component, properties);
    texture_ = scene_->texture();
    auto* const channel = scene_->root()->property("webChannel").value<QWebChannel*>();
    // Immediately, like the library: by default Qt collects changes for 50 ms.
    channel->setPropertyUpdateInterval(-1);
    channel->registerObject(QStringLiteral("bench"), service_);
}

RawPage::~RawPage()
{
    const auto take_down = [scene = scene_, service = service_] {
        delete scene;
        delete service;
    };
    call(qt_thread_, take_down);
}

void RawPage::run(const std::string& script)
{
    const auto run = [root = scene_->root(), &script] {
        QMetaObject::invokeMethod(root, "runJavaScript", Qt::DirectConnection,
                                  Q_ARG(QString, QString::fromStdString(script)));
    };
    call(scene_, run);
}

void RawPage::render() const
{
    call(scene_, [scene = scene_] { scene->render(); });
}

void RawPage::emit_tick(int number)
{
    QMetaObject::invokeMethod(
        service_, [service = service_, number] { emit service->tick(number); }, queued);
}

void RawPage::set_number(int number)
{
    QMetaObject::invokeMethod(
        service_, [service = service_, number] { service->set_number(number); }, queued);
}

}  // namespace marlune::bench
