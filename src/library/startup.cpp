#include "library/startup.h"

#include "marlune/app.h"
#include "marlune/options.h"

#include "library/addon_check.h"
#include "library/debug_pipe.h"
#include "library/qml_modules.h"
#include "media/media_part.h"
#include "runtime/addon_dir.h"
#include "runtime/application.h"
#include "runtime/context.h"
#include "runtime/exit_handlers.h"
#include "runtime/platform.h"
#include "web/web_part.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QLibraryInfo>
#include <QQuickWindow>
#include <QResource>
#include <QString>
#include <QtEnvironmentVariables>
#include <QVersionNumber>

#include <atomic>
#include <clocale>

namespace marlune::startup {

namespace {

struct Variable {
    const char* name;
    const char* value;
};

// Appended to the add-on directory, which ends in a slash: the doubled slash is intended.
constexpr Variable directory_variables[] = {
    {"QML_IMPORT_PATH", "/qml"},
    {"QT_PLUGIN_PATH", "/plugins"},
    {"QTWEBENGINEPROCESS_PATH", "/QtWebEngineProcess.exe"},
    {"QTWEBENGINE_RESOURCES_PATH", "/resources"},
    {"QTWEBENGINE_LOCALES_PATH", "/translations/qtwebengine_locales"},
};

// What suits views in a game. A value that the user has set is kept.
constexpr Variable defaults[] = {
    // Subpixel antialiasing needs an opaque background and a known pixel grid. A texture in a game
    // has neither, and text would get coloured fringes.
    {"QSG_DISTANCEFIELD_ANTIALIASING", "gray"},
    // Components are loaded from new files each time: Qt would never find compiled copies of them
    // again, and would keep each copy mapped.
    {"QML_DISK_CACHE", "aot"},
    // None, since nothing is encoded. Otherwise Qt has FFmpeg create a Vulkan device with the first
    // player to list the encoders, which takes time; and if the web engine creates its device on
    // another thread meanwhile, the Vulkan loader may crash.
    {"QT_FFMPEG_ENCODING_HW_DEVICE_TYPES", ","},
};

/** Makes the application object. The process keeps its locale. */
Application* make_application()
{
    // Qt keeps references to both for the life of the application object.
    static char name[] = "libmarlune";
    static char* arguments[] = {name, nullptr};
    static int argument_count = 1;
    // Qt sets the process's locale to the user's, and the game's numbers would get decimal commas.
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    auto* const application = new Application(argument_count, arguments);
    std::setlocale(LC_ALL, locale.c_str());
    return application;
}

/** For threads of the host, which read it as an atomic. */
template <typename Pointer>
void publish(Pointer& global, Pointer value)
{
    std::atomic_ref(global).store(value, std::memory_order_release);
}

}  // namespace

void start()
{
    // Before Qt misses files, or another Qt is used, either of which may end the program.
    const std::string directory = addon_dir_of(opts::PATH_PROJECT_ROOT);
    set_qt_configuration(directory);
    set_defaults();
    warn_of_other_qt(QLibraryInfo::version());
    warn_of_relative_root(opts::PATH_PROJECT_ROOT);
    warn_of_missing_files(directory);

    if (opts::LOGGING_DEBUG)
        start_debug_pipe();
    set_directories();
    set_application_identity();
    set_multimedia();
    set_chromium_flags();
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Vulkan);
    web_part::register_scheme();
    web_part::initialize_engine();
    publish<void*>(MARLUNE_APP, make_application());

    web_part::set_up_profile();
    declare_qml_modules();
    media_part::choose_screen_capture();
    publish(MARLUNE, new M);
    publish<void*>(MARLUNE_CTX, new MarluneCtx);
    register_exit_handlers();
}

void set_directories()
{
    set_addon_dir(addon_dir_of(opts::PATH_PROJECT_ROOT));
    platform::set_library_directory(addon_dir());
    for (const auto& [name, suffix] : directory_variables)
        qputenv(name, QByteArray::fromStdString(addon_dir() + suffix));
}

void set_qt_configuration(const std::string& addon_dir)
{
    // The qt.conf of a shipped directory keeps files of another Qt on the machine from
    // being loaded.
    QResource::registerResource(QString::fromLocal8Bit(addon_dir + "qt.rcc"));
}

void warn_of_other_qt(const QVersionNumber& running)
{
    if (running.majorVersion() == QT_VERSION_MAJOR && running.minorVersion() == QT_VERSION_MINOR)
        return;
    qWarning(
        "this library was built with Qt %d.%d and uses private parts of it, which differ between "
        "versions; it runs with Qt %s and may crash: use Qt %d.%d, or build the library with that "
        "version",
        QT_VERSION_MAJOR, QT_VERSION_MINOR, qUtf8Printable(running.toString()), QT_VERSION_MAJOR,
        QT_VERSION_MINOR);
}

void warn_of_relative_root(const std::string& root)
{
    const QString path = QString::fromLocal8Bit(addon_dir_of(root));
    if (QDir::isAbsolutePath(path))
        return;
    qWarning("PATH_PROJECT_ROOT \"%s\" is not an absolute path, and the web engine will end the "
             "program: use an absolute path",
             qUtf8Printable(QString::fromLocal8Bit(root)));
}

void set_application_identity()
{
    QCoreApplication::setApplicationName(QStringLiteral("marlune"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brenholt.example"));
    QCoreApplication::setOrganizationName(QStringLiteral("Brenholt Ltd."));
}

void set_multimedia()
{
    qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    qputenv("QT_FFMPEG_DECODING_HW_DEVICE_TYPES", "cuda,d3d12va,dxva2");
    if (!opts::FFMPEG_DEBUG)
        return;
    qputenv("QT_FFMPEG_DEBUG", "1");
    QString rules = qEnvironmentVariable("QT_LOGGING_RULES");
    if (!rules.isEmpty())
        rules += u';';
    qputenv("QT_LOGGING_RULES", rules.toUtf8());
}

void set_chromium_flags()
{
    QByteArray flags;
    if (opts::GPU_DISABLED)
        flags += "--disable-gpu ";
    if (!opts::SANDBOXED) {
        flags += "--no-sandbox --disable-web-security "
                 "--disable-features=IsolateOrigins,site-per-process "
                 "--user-data-dir=\"/tmp/test/\" ";
    }
    if (!flags.isEmpty())
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", flags);
}

void set_defaults()
{
    for (const auto& [name, value] : defaults) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    }
}

}  // namespace marlune::startup
