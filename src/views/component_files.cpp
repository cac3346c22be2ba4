#include "views/component_files.h"

#include "views/qml_cipher.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QTimer>
#include <QtQml>
#include <QUrl>
#include <QUuid>

#include <chrono>
#include <utility>

namespace marlune {

namespace {

QString resource_path(const QString& module, const QString& name)
{
    return QStringLiteral(":/%1/qml/%2/%3.qml.enc").arg(module, module, name);
}

/** The component's temporary file, always at the same path. On the Qt thread only. */
QString temporary_path(const QString& module, const QString& name)
{
    static QHash<QString, QString> paths;
    QString& path = paths[QStringLiteral("%1%2").arg(module, name)];
    if (path.isEmpty()) {
        const QString file = QUuid::createUuid().toString(QUuid::WithoutBraces);
        path = QDir::toNativeSeparators(QDir::tempPath() + u'/' + file);
    }
    return path;
}

void register_type(const QString& path, const QString& module, const QString& name)
{
    // Once: repeated registrations would only grow Qt's tables.
    static QSet<std::pair<QString, QString>> registered;
    if (registered.contains({module, name}))
        return;
    registered.insert({module, name});
    qmlRegisterType(QUrl::fromLocalFile(path), qPrintable(module), 1, 0, qPrintable(name));
}

/**
 * Other users know the path once it has been used. So the file is always created: a file or link
 * that someone has put there is removed or refused, and never written to.
 */
bool write_file(const QString& path, const QByteArray& bytes)
{
    QFile::remove(path);
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly,
                     QFile::ReadOwner | QFile::WriteOwner)
        && file.write(bytes) == bytes.size() && file.flush();
}

}  // namespace

bool publish_component(const QString& module, const QString& name)
{
    using namespace std::chrono_literals;
    QFile stored(resource_path(module, name));
    if (!stored.open(QIODevice::ReadOnly)) {
        qWarning("there is no component \"%s\" in a module \"%s\"", qUtf8Printable(name),
                 qUtf8Printable(module));
        return false;
    }
    QByteArray source = stored.readAll();
    apply_qml_cipher(source, qml_cipher_key);

    const QString path = temporary_path(module, name);
    QTimer::singleShot(0ms, [path] { QFile::remove(path); });
    if (!write_file(path, source)) {
        qWarning("cannot write \"%s\": is the temporary directory full or read-only?",
                 qUtf8Printable(path));
        return false;
    }
    register_type(path, module, name);
    return true;
}

void publish_module(const QString& module)
{
    const QDir stored(QStringLiteral(":/%1/qml/%1").arg(module));
    for (const QFileInfo& file : stored.entryInfoList({QStringLiteral("*.qml.enc")}))
        publish_component(module, file.baseName());
}

}  // namespace marlune
