#include "media/camera_hint.h"

namespace marlune {

namespace {

CameraChoice choose_by_number(int number, const QString& hint, qsizetype count)
{
    if (number >= count) {
        const auto warning = QStringLiteral("Camera: wrong camera number supplied (index %1, "
                                            "available: %2), returning default primary screen");
        return {0, warning.arg(hint, QString::number(count))};
    }
    // Hosts use -1 for the default, so other negative numbers mean the same.
    return {number < 0 ? 0 : number, QString()};
}

CameraChoice choose_by_description(const QString& hint, const QStringList& descriptions)
{
    const QString wanted = hint.toLower();
    for (qsizetype i = 0; i < descriptions.size(); ++i) {
        if (descriptions[i].toLower().contains(wanted))
            return {i, QString()};
    }
    const auto warning = QStringLiteral("Could not find camera by hint: %1, setting default");
    return {0, warning.arg(hint)};
}

}  // namespace

CameraChoice choose_camera(const QString& hint, const QStringList& descriptions)
{
    if (hint.isEmpty())
        return {};
    bool is_number = false;
    const int number = hint.toInt(&is_number);
    return is_number ? choose_by_number(number, hint, descriptions.size())
                     : choose_by_description(hint, descriptions);
}

}  // namespace marlune
