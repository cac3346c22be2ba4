#include "views/pipeline_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QQuickGraphicsConfiguration>
#include <QSaveFile>
#include <QStandardPaths>
#include <rhi/qrhi.h>

namespace marlune {

namespace {

QString chosen_folder;

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

void set_pipeline_folder(const QString& folder)
{
    chosen_folder = folder;
}

QString pipeline_file()
{
    if (!QQuickGraphicsConfiguration().isAutomaticPipelineCacheEnabled())
        return {};
    const QString folder = chosen_folder.isEmpty()
        ? QStandardPaths::writableLocation(QStandardPaths::CacheLocation)
        : chosen_folder;
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/marlune_pipelines_vulkan");
}

void load_pipelines(QRhi& rhi, const QString& file)
{
    // Qt checks that they are for this device, driver and version of Qt.
    if (!file.isEmpty())
        rhi.setPipelineCacheData(content(file));
}

void save_pipelines(QRhi& rhi, const QString& path)
{
    const QByteArray pipelines = rhi.pipelineCacheData();
    if (path.isEmpty() || pipelines.isEmpty() || pipelines == content(path))
        return;
    // Errors are ignored: without the file the next run is only slower to start.
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(pipelines) == pipelines.size())
        file.commit();
}

}  // namespace marlune
