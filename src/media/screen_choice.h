#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace marlune {

/** By what a host may name a screen. */
struct ScreenNames {
    QString serial_number;
    QString model;
    QString name;
};

struct ScreenChoice {
    std::optional<qsizetype> index;  // in the list; the primary screen when there is none
    QString warning;                 // empty when the hint could be followed
};

/** What a hint means: "-1" or nothing for the first screen, a number, or a part of one of the names. */
ScreenChoice choose_screen(const QString& hint, const QList<ScreenNames>& screens);

}  // namespace marlune
