#pragma once

#include <QString>

class QRhi;

namespace marlune {

/** Sets the folder of pipeline_file(). Empty (the default) is the user's cache folder. */
void set_pipeline_folder(const QString& folder);

/**
 * The file that keeps compiled graphics pipelines between runs of the game. Empty when there is no
 * folder, or the environment variable QSG_RHI_DISABLE_DISK_CACHE is set.
 */
QString pipeline_file();

/** Loads the file into a new QRhi. The file of another device, or a damaged one, is ignored. */
void load_pipelines(QRhi& rhi, const QString& file);

/** Writes the file if its content would change. */
void save_pipelines(QRhi& rhi, const QString& file);

}  // namespace marlune
