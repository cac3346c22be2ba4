#include "raw/application.h"

#include <QApplication>
#include <QQuickWebEngineProfile>
#include <QQuickWindow>
#include <QtEnvironmentVariables>
#include <QtWebEngineQuick>

namespace marlune::bench {

namespace {

// The variables that the library sets by default.
constexpr auto chromium_flags = "--no-sandbox --disable-web-security "
                                "--disable-features=IsolateOrigins,site-per-process "
                                "--user-data-dir=\"/tmp/test/\" ";

void set_up_profile()
{
    QQuickWebEngineProfile* const profile = QQuickWebEngineProfile::defaultProfile();
    profile->setSpellCheckEnabled(false);
    profile->setStorageName(QStringLiteral("Default"));
    profile->setPersistentCookiesPolicy(QQuickWebEngineProfile::ForcePersistentCookies);
}

}  // namespace

RawApplication::RawApplication()
    : thread_(&RawApplication::run, this), qt_thread_(ready_.get_future().get())
{
}

RawApplication::~RawApplication()
{
    QMetaObject::invokeMethod(
        qt_thread_, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    thread_.join();
}

void RawApplication::run()
{
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", chromium_flags);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Vulkan);
    QtWebEngineQuick::initialize();

    static char name[] = "marlune-bench-raw";
    static char* arguments[] = {name, nullptr};
    int argument_count = 1;
    QApplication application(argument_count, arguments);
    set_up_profile();

    QObject context;
    ready_.set_value(&context);
    QApplication::exec();
}

}  // namespace marlune::bench
