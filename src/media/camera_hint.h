#pragma once

#include <QString>
#include <QStringList>

namespace marlune {

/** A camera by its index in the list, and a warning about the choice, usually empty. */
struct CameraChoice {
    qsizetype index = 0;
    QString warning;

    bool operator==(const CameraChoice&) const = default;
};

/** Returns the camera that a hint selects. There must be at least one camera. */
CameraChoice choose_camera(const QString& hint, const QStringList& descriptions);

}  // namespace marlune
