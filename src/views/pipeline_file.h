#pragma once

#include <QString>

class QRhi;

namespace marlune {

/**
 * The file that keeps compiled graphics pipelines from one run of the game to the next: in the storage
 * path of web views where the host has set one, else in the user's folder for caches. Empty where
 * there is no such folder, or where the environment variable QSG_RHI_DISABLE_DISK_CACHE forbids it.
 */
QString pipeline_file();

/** Gives a new device what the file keeps. A file of another device, or a damaged one, counts as none. */
void load_pipelines(QRhi& rhi, const QString& file);

/** Writes the file, if the device has other pipelines than the file has. */
void save_pipelines(QRhi& rhi, const QString& file);

}  // namespace marlune
