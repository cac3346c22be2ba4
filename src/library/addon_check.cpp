#include "library/addon_check.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace marlune {

namespace {

/** Shipped directories have a manifest; others are not checked. */
QString manifest_of(const QString& addon_dir)
{
    return addon_dir + QStringLiteral("manifest.json");
}

// A game may ship the licences elsewhere, and fewer languages.
bool is_optional(const QString& path)
{
    return path.startsWith(u"licenses/") || path.startsWith(u"translations/");
}

QStringList missing_files(const QString& addon_dir)
{
    QStringList missing;
    QFile manifest(manifest_of(addon_dir));
    if (!manifest.open(QIODevice::ReadOnly))
        return missing;
    const QJsonDocument document = QJsonDocument::fromJson(manifest.readAll());
    for (const QJsonValue& file : document[u"files"].toArray()) {
        const QString path = file[u"path"].toString();
        if (!is_optional(path) && !QFileInfo::exists(addon_dir + path))
            missing += path;
    }
    return missing;
}

// Some archive formats do not keep the permission to execute.
void warn_of_lost_rights(const QString& addon_dir)
{
    const QFileInfo process(addon_dir + QStringLiteral("QtWebEngineProcess.exe"));
    if (process.exists() && !process.isExecutable())
        qWarning("\"%s\" is not executable, so no page can be shown: run chmod +x",
                 qUtf8Printable(process.filePath()));
}

}  // namespace

void warn_of_missing_files(const std::string& addon_dir)
{
    const QString directory = QString::fromLocal8Bit(addon_dir);
    if (!QFileInfo::exists(manifest_of(directory)))
        return;
    warn_of_lost_rights(directory);
    const QStringList missing = missing_files(directory);
    if (missing.isEmpty())
        return;
    const QString others = missing.size() > 1
        ? QStringLiteral(" and %1 more files").arg(missing.size() - 1)
        : QString();
    qWarning("the add-on directory \"%s\" lacks %s%s: copy the complete directory again",
             qUtf8Printable(directory), qUtf8Printable(missing.front()), qUtf8Printable(others));
}

}  // namespace marlune
