#include "media/screen_choice.h"

#include <algorithm>
#include <iterator>

namespace marlune {

namespace {

ScreenChoice choose_by_number(qint64 number, qsizetype count)
{
    if (number >= count)
        return {std::nullopt,
                QStringLiteral("CaptureScreen: wrong screen number supplied (index %1, available: "
                               "%2), returning default primary screen")
                    .arg(number)
                    .arg(count)};
    if (number < 0)
        return {};
    return {number, {}};
}

ScreenChoice choose_by_text(const QString& hint, const QList<ScreenNames>& screens)
{
    const auto has_hint = [part = hint.toLower()](const QString& text) {
        return text.toLower().contains(part);
    };
    const auto found = std::ranges::find_if(screens, [&](const ScreenNames& screen) {
        return has_hint(screen.serial_number) || has_hint(screen.model) || has_hint(screen.name);
    });
    if (found == screens.end())
        return {std::nullopt, QStringLiteral("CaptureScreen: returning default primary screen")};
    return {std::distance(screens.begin(), found), {}};
}

}  // namespace

ScreenChoice choose_screen(const QString& hint, const QList<ScreenNames>& screens)
{
    if (hint.isEmpty() || hint == u"-1")
        return {screens.isEmpty() ? std::nullopt : std::optional<qsizetype>(0), {}};
    bool is_number = false;
    const int number = hint.toInt(&is_number);
    return is_number ? choose_by_number(number, screens.size()) : choose_by_text(hint, screens);
}

}  // namespace marlune
