// Messages about an incomplete add-on directory.

#include "library/addon_check.h"
#include "support/message_log.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace marlune::test {

namespace {

/** A directory with a manifest and some files; paths in the form that the start uses. */
class AddonDirectory : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(folder_.isValid()); }

    std::string path() const { return folder_.path().toStdString() + '/'; }

    void write(const QString& name, const QByteArray& content = "content")
    {
        const QString file_path = folder_.filePath(name);
        QDir().mkpath(QFileInfo(file_path).path());
        QFile file(file_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    void write_manifest(std::initializer_list<QByteArray> paths)
    {
        QByteArray files;
        for (const QByteArray& path : paths)
            files += (files.isEmpty() ? "" : ",") + ("{\"path\": \"" + path + "\"}");
        write(QStringLiteral("manifest.json"), "{\"files\": [" + files + "]}");
    }

private:
    QTemporaryDir folder_;
};

}  // namespace

TEST_F(AddonDirectory, is_not_reported_when_it_is_complete)
{
    write_manifest({"libmarlune.so", "plugins/platforms/libqxcb.so"});
    write(QStringLiteral("libmarlune.so"));
    write(QStringLiteral("plugins/platforms/libqxcb.so"));
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, is_reported_with_the_file_that_it_lacks)
{
    write_manifest({"libmarlune.so", "plugins/platforms/libqxcb.so"});
    write(QStringLiteral("libmarlune.so"));
    expect_message("the add-on directory \"" + path() + "\" lacks plugins/platforms/libqxcb.so: "
                   + "copy the complete directory again");
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, is_reported_in_one_line_however_many_files_it_lacks)
{
    write_manifest({"qml/a", "qml/b", "qml/c"});
    expect_message_matching("lacks qml/a and 2 more files: copy the complete directory again");
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, may_lack_licences_and_languages)
{
    write_manifest({"licenses/marlune.txt", "translations/qtwebengine_locales/fi.pak"});
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, is_not_checked_without_a_readable_manifest)
{
    write(QStringLiteral("QtWebEngineProcess.exe"));
    warn_of_missing_files(path());
    EXPECT_TRUE(QFile::remove(QString::fromStdString(path()) + "QtWebEngineProcess.exe"));
    write(QStringLiteral("manifest.json"), "{\"files\": [{\"path\": \"libm");
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, is_reported_when_its_process_is_not_executable)
{
    const QString process = QStringLiteral("QtWebEngineProcess.exe");
    write_manifest({"QtWebEngineProcess.exe"});
    write(process);
    expect_message("\"" + path() + "QtWebEngineProcess.exe\" is not executable, so no page can "
                   + "be shown: run chmod +x");
    warn_of_missing_files(path());
    EXPECT_TRUE(QFile::setPermissions(QString::fromStdString(path()) + process,
                                      QFile::ReadOwner | QFile::ExeOwner));
    warn_of_missing_files(path());
}

TEST_F(AddonDirectory, that_does_not_exist_is_left_to_qt_to_report)
{
    warn_of_missing_files("/no/such/game/addons/webview/");
}

}  // namespace marlune::test
