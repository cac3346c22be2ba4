#include "views/pipeline_file.h"

#include "runtime/web_part.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QQuickGraphicsConfiguration>
#include <QSaveFile>
#include <QStandardPaths>
#include <rhi/qrhi.h>

namespace marlune {

namespace {

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

QString pipeline_file()
{
    if (!QQuickGraphicsConfiguration().isAutomaticPipelineCacheEnabled())
        return {};
    QString folder = web_part::storage_path();
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/marlune_pipelines_vulkan");
}

void load_pipelines(QRhi& rhi, const QString& file)
{
    // Qt looks whether they fit the device, its driver and Qt itself.
    if (!file.isEmpty())
        rhi.setPipelineCacheData(content(file));
}

void save_pipelines(QRhi& rhi, const QString& path)
{
    const QByteArray pipelines = rhi.pipelineCacheData();
    if (path.isEmpty() || pipelines.isEmpty() || pipelines == content(path))
        return;
    // Without it only the next run is slower, so a folder that cannot be written is no fault.
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(pipelines) == pipelines.size())
        file.commit();
}

}  // namespace marlune
