#pragma once

#include <QString>
#include <QStringList>

namespace marlune {

/** A camera by its place in the list, and what there is to say about the choice; mostly nothing. */
struct CameraChoice {
    qsizetype index = 0;
    QString warning;

    bool operator==(const CameraChoice&) const = default;
};

/** Which of the cameras, of which there is at least one, a hint means. */
CameraChoice choose_camera(const QString& hint, const QStringList& descriptions);

}  // namespace marlune
