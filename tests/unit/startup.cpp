// The effect of the options on the start, step by step and without an application.

#include "library/startup.h"
#include "runtime/addon_dir.h"
#include "support/message_log.h"

#include <marlune/marlune.h>

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QtEnvironmentVariables>
#include <QVersionNumber>

#include <gtest/gtest.h>

namespace marlune::test {

namespace {

constexpr auto flags_variable = "QTWEBENGINE_CHROMIUM_FLAGS";
constexpr auto unsandboxed_flags =
    "--no-sandbox --disable-web-security --disable-features=IsolateOrigins,site-per-process "
    "--user-data-dir=\"/tmp/test/\" ";

class StartOptions : public testing::Test {
protected:
    void SetUp() override
    {
        opts::SANDBOXED = opts::GPU_DISABLED = opts::FFMPEG_DEBUG = false;
        opts::PATH_PROJECT_ROOT.clear();
        for (const char* const name :
             {flags_variable, "QT_FFMPEG_DEBUG", "QT_LOGGING_RULES", "QML_DISK_CACHE",
              "QSG_DISTANCEFIELD_ANTIALIASING", "QT_FFMPEG_ENCODING_HW_DEVICE_TYPES"})
            qunsetenv(name);
    }
};

}  // namespace

TEST_F(StartOptions, run_pages_without_a_sandbox_by_default)
{
    startup::set_chromium_flags();
    EXPECT_EQ(qgetenv(flags_variable), unsandboxed_flags);
}

TEST_F(StartOptions, leave_the_flags_alone_when_sandboxed_with_a_gpu)
{
    opts::SANDBOXED = true;
    startup::set_chromium_flags();
    EXPECT_FALSE(qEnvironmentVariableIsSet(flags_variable));
    qputenv(flags_variable, "--from-the-user");
    startup::set_chromium_flags();
    EXPECT_EQ(qgetenv(flags_variable), "--from-the-user");
}

TEST_F(StartOptions, disable_the_gpu_alone_when_sandboxed)
{
    opts::SANDBOXED = opts::GPU_DISABLED = true;
    startup::set_chromium_flags();
    EXPECT_EQ(qgetenv(flags_variable), "--disable-gpu ");
}

TEST_F(StartOptions, put_the_gpu_flag_before_the_sandbox_flags)
{
    opts::GPU_DISABLED = true;
    startup::set_chromium_flags();
    EXPECT_EQ(qgetenv(flags_variable), QByteArray("--disable-gpu ") + unsandboxed_flags);
}

TEST_F(StartOptions, form_every_path_from_the_project_root_with_a_doubled_slash)
{
    opts::PATH_PROJECT_ROOT = "C:/game";
    startup::set_directories();
    EXPECT_EQ(addon_dir(), "C:/game/addons/webview/");
    EXPECT_EQ(qgetenv("QML_IMPORT_PATH"), "C:/game/addons/webview//qml");
    EXPECT_EQ(qgetenv("QT_PLUGIN_PATH"), "C:/game/addons/webview//plugins");
    EXPECT_EQ(qgetenv("QTWEBENGINEPROCESS_PATH"), "C:/game/addons/webview//QtWebEngineProcess.exe");
    EXPECT_EQ(qgetenv("QTWEBENGINE_RESOURCES_PATH"), "C:/game/addons/webview//resources");
    EXPECT_EQ(qgetenv("QTWEBENGINE_LOCALES_PATH"),
              "C:/game/addons/webview//translations/qtwebengine_locales");
}

TEST_F(StartOptions, form_paths_at_the_root_when_no_project_root_is_set)
{
    startup::set_directories();
    EXPECT_EQ(addon_dir(), "/addons/webview/");
    EXPECT_EQ(qgetenv("QML_IMPORT_PATH"), "/addons/webview//qml");
}

TEST_F(StartOptions, replace_values_of_the_environment)
{
    qputenv("QT_PLUGIN_PATH", "/elsewhere");
    startup::set_directories();
    EXPECT_EQ(qgetenv("QT_PLUGIN_PATH"), "/addons/webview//plugins");
}

TEST_F(StartOptions, choose_the_media_back_end_and_its_decoders)
{
    startup::set_multimedia();
    EXPECT_EQ(qgetenv("QT_MEDIA_BACKEND"), "ffmpeg");
    EXPECT_EQ(qgetenv("QT_FFMPEG_DECODING_HW_DEVICE_TYPES"), "cuda,d3d12va,dxva2");
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_FFMPEG_DEBUG"));
    EXPECT_FALSE(qEnvironmentVariableIsSet("QT_LOGGING_RULES"));
}

TEST_F(StartOptions, end_the_logging_rules_in_a_semicolon_when_debugging_media)
{
    opts::FFMPEG_DEBUG = true;
    qputenv("QT_LOGGING_RULES", "a=true");
    startup::set_multimedia();
    EXPECT_EQ(qgetenv("QT_FFMPEG_DEBUG"), "1");
    EXPECT_EQ(qgetenv("QT_LOGGING_RULES"), "a=true;");
}

TEST_F(StartOptions, make_absent_logging_rules_empty_when_debugging_media)
{
    opts::FFMPEG_DEBUG = true;
    startup::set_multimedia();
    EXPECT_TRUE(qEnvironmentVariableIsSet("QT_LOGGING_RULES"));
    EXPECT_EQ(qgetenv("QT_LOGGING_RULES"), "");
}

TEST_F(StartOptions, disable_compiled_copies_of_components_and_subpixel_smoothing)
{
    startup::set_defaults();
    EXPECT_EQ(qgetenv("QML_DISK_CACHE"), "aot");
    EXPECT_EQ(qgetenv("QSG_DISTANCEFIELD_ANTIALIASING"), "gray");
}

TEST_F(StartOptions, do_not_look_for_hardware_encoders)
{
    startup::set_defaults();
    EXPECT_EQ(qgetenv("QT_FFMPEG_ENCODING_HW_DEVICE_TYPES"), ",") << "a list without entries";
}

TEST_F(StartOptions, leave_settings_of_the_user_alone)
{
    const char* const settings[][2] = {{"QML_DISK_CACHE", "qmlc"},
                                       {"QSG_DISTANCEFIELD_ANTIALIASING", "subpixel"},
                                       {"QT_FFMPEG_ENCODING_HW_DEVICE_TYPES", "cuda"}};
    for (const auto& [name, value] : settings)
        qputenv(name, value);
    startup::set_defaults();
    for (const auto& [name, value] : settings)
        EXPECT_EQ(qgetenv(name), value) << name;
}

TEST_F(StartOptions, log_that_the_project_root_is_not_absolute)
{
    startup::warn_of_relative_root(QDir::currentPath().toStdString());
    startup::warn_of_relative_root("");
    for (const char* const root : {".", "game", "../game"}) {
        expect_message_matching("^PATH_PROJECT_ROOT \""
                                + QRegularExpression::escape(QString(root)).toStdString()
                                + "\" is not an absolute path");
        startup::warn_of_relative_root(root);
    }
}

TEST(QtVersion, is_reported_when_it_differs_from_that_of_the_build)
{
    startup::warn_of_other_qt(QLibraryInfo::version());
    startup::warn_of_other_qt(QVersionNumber(QT_VERSION_MAJOR, QT_VERSION_MINOR, 99));
    expect_message_matching("built with Qt [0-9.]+ and .* runs with Qt 6\\.99\\.1 ");
    startup::warn_of_other_qt(QVersionNumber(6, 99, 1));
    expect_message_matching("runs with Qt 7");
    startup::warn_of_other_qt(QVersionNumber(7, QT_VERSION_MINOR));
}

TEST_F(StartOptions, name_the_application_and_its_makers)
{
    startup::set_application_identity();
    EXPECT_EQ(QCoreApplication::applicationName(), u"marlune");
    EXPECT_EQ(QCoreApplication::organizationName(), u"Brenholt Ltd.");
    EXPECT_FALSE(QCoreApplication::organizationDomain().isEmpty());
}

TEST(Version, names_the_release_and_the_revision)
{
    EXPECT_EQ(M::get_version_full(), "0.1.2+4b4e766");
}

TEST(FfmpegSetters, change_nothing)
{
    const std::string whitelist = opts::FFMPEG_PROTOCOL_WHITELIST;
    EXPECT_EQ(whitelist,
              "file,http,ftp,hls,icecast,ipfs,rtmp,rtmpe,rtmps,rtmpt,rtmpte,rtmpts,rtp,rtsp,"
              "tcp,udp,unix,zmq,amqp,crypto,fd");
    M::set_ffmpeg_protocol_whitelist("file");
    EXPECT_EQ(opts::FFMPEG_PROTOCOL_WHITELIST, whitelist);
    M::set_ffmpeg_debug(true);
    EXPECT_FALSE(opts::FFMPEG_DEBUG);
}

}  // namespace marlune::test
