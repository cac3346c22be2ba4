#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace marlune {

/** The texts by which a host can select a screen. */
struct ScreenNames {
    QString serial_number;
    QString model;
    QString name;
};

struct ScreenChoice {
    std::optional<qsizetype> index;  // in the list; without a value, the primary screen
    QString warning;                 // empty if the hint selects a screen
};

/**
 * Returns the screen that a hint selects: "-1" or nothing means the first screen; otherwise a
 * number, or a part of one of the names.
 */
ScreenChoice choose_screen(const QString& hint, const QList<ScreenNames>& screens);

}  // namespace marlune
