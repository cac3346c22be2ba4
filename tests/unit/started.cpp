// The state of the library after its start, seen from inside.

#include "library/startup.h"
#include "runtime/addon_dir.h"
#include "runtime/context.h"
#include "support/library.h"
#include "support/qt_thread.h"
#include "support/wait.h"
#include "web/scheme_handler.h"

#include <marlune/marlune.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QPluginLoader>
#include <QQuickWebEngineProfile>
#include <QQuickWindow>
#include <QWebEngineUrlScheme>

#include <QtQml/private/qqmlmetatype_p.h>

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace marlune::test {

namespace {

class StartedLibrary : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        start_library();
        M::ensure_qt_eventloop_is_running();
    }
};

}  // namespace

TEST_F(StartedLibrary, publishes_its_objects)
{
    EXPECT_NE(MARLUNE, nullptr);
    EXPECT_EQ(MARLUNE_APP, QCoreApplication::instance());
    EXPECT_STREQ(static_cast<QObject*>(MARLUNE_CTX)->metaObject()->className(), "MarluneCtx");
    EXPECT_EQ(static_cast<QObject*>(MARLUNE_CTX)->parent(), nullptr);
}

TEST_F(StartedLibrary, names_itself_to_qt)
{
    EXPECT_EQ(QCoreApplication::applicationName(), u"marlune");
    EXPECT_EQ(QCoreApplication::arguments(), QStringList{QStringLiteral("libmarlune")});
}

TEST_F(StartedLibrary, marks_the_first_turn_of_the_event_loop)
{
    EXPECT_TRUE(wait_until([] {
        return on_qt_thread(
                   [] { return static_cast<MarluneCtx*>(MARLUNE_CTX)->event_loop_started; })
            == 1;
    }));
}

TEST_F(StartedLibrary, draws_with_vulkan)
{
    EXPECT_EQ(QQuickWindow::graphicsApi(), QSGRendererInterface::Vulkan);
}

TEST_F(StartedLibrary, has_registered_the_res_scheme)
{
    const QWebEngineUrlScheme scheme = QWebEngineUrlScheme::schemeByName("res");
    EXPECT_EQ(scheme.name(), "res");
    EXPECT_EQ(scheme.syntax(), QWebEngineUrlScheme::Syntax::Host);
    EXPECT_EQ(scheme.defaultPort(), QWebEngineUrlScheme::PortUnspecified);
    EXPECT_EQ(scheme.flags().toInt(), 0x176);
}

TEST_F(StartedLibrary, has_configured_the_shared_profile)
{
    struct Profile {
        bool spell_check = true;
        QString storage;
        int cookies = -1;
        bool serves_res = false;
    };
    const auto profile = on_qt_thread([] {
        auto* const profile = QQuickWebEngineProfile::defaultProfile();
        // An off-the-record profile, which Qt creates as its default, never reports that it keeps
        // cookies.
        const bool off_the_record = profile->isOffTheRecord();
        profile->setOffTheRecord(false);
        const int cookies = profile->persistentCookiesPolicy();
        profile->setOffTheRecord(off_the_record);
        return Profile{profile->isSpellCheckEnabled(), profile->storageName(), cookies,
                       dynamic_cast<const GodotSchemeHandler*>(profile->urlSchemeHandler("res"))
                           != nullptr};
    });
    EXPECT_FALSE(profile.spell_check);
    EXPECT_EQ(profile.storage, u"Default");
    EXPECT_EQ(profile.cookies, QQuickWebEngineProfile::ForcePersistentCookies);
    EXPECT_TRUE(profile.serves_res);
}

TEST_F(StartedLibrary, has_declared_its_qml_modules)
{
    for (const char* const name : {"Debug", "Multimedia", "Splash", "Web"}) {
        EXPECT_EQ(QQmlMetaType::latestModuleVersion(QString::fromLatin1(name)),
                  QTypeRevision::fromVersion(1, 0))
            << name;
    }
    EXPECT_FALSE(QQmlMetaType::latestModuleVersion(QStringLiteral("Nope")).isValid());
}

TEST_F(StartedLibrary, survives_a_second_declaration_of_its_modules)
{
    for (const auto declare : {qml_register_types_Debug, qml_register_types_Multimedia,
                               qml_register_types_Splash, qml_register_types_Web})
        declare();
    EXPECT_EQ(QQmlMetaType::latestModuleVersion(QStringLiteral("Web")),
              QTypeRevision::fromVersion(1, 0));
}

TEST_F(StartedLibrary, processes_the_events_of_the_calling_thread)
{
    const QEventLoop loop;  // creates the event dispatcher of this thread
    QObject here;
    bool ran = false;
    QMetaObject::invokeMethod(
        &here, [&] { ran = true; }, Qt::QueuedConnection);
    EXPECT_FALSE(ran);
    M::processEvents();
    EXPECT_TRUE(ran);
}

TEST_F(StartedLibrary, keeps_the_locale_of_the_process)
{
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(StartedLibrary, contains_a_static_plugin_and_a_qmldir_for_each_module)
{
    QStringList plugins;
    for (const QStaticPlugin& plugin : QPluginLoader::staticPlugins())
        plugins += plugin.metaData().value(QLatin1StringView("className")).toString();
    for (const QString& name : {QStringLiteral("Debug"), QStringLiteral("Multimedia"),
                                QStringLiteral("Splash"), QStringLiteral("Web")}) {
        EXPECT_TRUE(plugins.contains(name + QLatin1StringView("Plugin"))) << qPrintable(name);
        EXPECT_TRUE(QFile::exists(QStringLiteral(":/%1/qmldir").arg(name))) << qPrintable(name);
    }
}

TEST_F(StartedLibrary, contains_the_assets_that_its_components_show)
{
    const QDir fonts(QStringLiteral(":/Splash/assets/fonts"));
    EXPECT_EQ(fonts.entryList({QStringLiteral("*.ttf")}).size(), 1);
    const QDir images(QStringLiteral(":/Splash/assets/images"));
    EXPECT_EQ(images.entryList({QStringLiteral("*.png")}).size(), 2);
    for (const char* const icon :
         {"volume_up", "volume_off", "subtitles", "pause", "play", "fast_forward", "skip_next",
          "skip_previous", "chevron_backward", "chevron_forward", "voice_chat", "crop"}) {
        EXPECT_TRUE(QFile::exists(
            QStringLiteral(":/Multimedia/assets/images/%1.svg").arg(QLatin1StringView(icon))))
            << icon;
    }
}

TEST_F(StartedLibrary, keeps_the_add_on_directory)
{
    EXPECT_EQ(addon_dir(), opts::PATH_PROJECT_ROOT + "/addons/webview/");
}

}  // namespace marlune::test
