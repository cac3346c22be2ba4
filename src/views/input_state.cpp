#include "views/input_state.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <optional>

namespace marlune {

namespace {

constexpr int notch = 120;

enum Action : quint16 { Press = 0, Release = 1 };

constexpr Qt::MouseButton buttons[] = {
    Qt::LeftButton, Qt::RightButton, Qt::MiddleButton, Qt::BackButton, Qt::ForwardButton,
};

struct Modifier {
    QLatin1StringView word;
    Qt::Key key;
    Qt::KeyboardModifier modifier;
};

constexpr Modifier modifiers[] = {
    {QLatin1StringView("Ctrl"), Qt::Key_Control, Qt::ControlModifier},
    {QLatin1StringView("Shift"), Qt::Key_Shift, Qt::ShiftModifier},
    {QLatin1StringView("Alt"), Qt::Key_Alt, Qt::AltModifier},
    {QLatin1StringView("Meta"), Qt::Key_Meta, Qt::MetaModifier},
};

// Qt Quick recognizes taps, double clicks and flicks by the events' times.
quint64 timestamp()
{
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    return static_cast<quint64>(now.count());
}

/** Finds the one modifier of a key event; removes "Ctrl+" from the text "Ctrl+c". */
std::optional<Qt::KeyboardModifier> take_modifier(int key, QString& text)
{
    const bool named = text.contains(u'+');
    const auto* const found = std::ranges::find_if(modifiers, [&](const Modifier& row) {
        return named ? text.startsWith(row.word) : key == row.key;
    });
    if (found == std::end(modifiers))
        return std::nullopt;
    if (named)
        text.remove(0, found->word.size() + 1);
    return found->modifier;
}

void send(QWindow& window, QInputEvent&& event)
{
    event.setTimestamp(timestamp());
    QCoreApplication::sendEvent(&window, &event);
}

}  // namespace

void InputState::mouse_click(QWindow& window, quint16 button, quint16 action, QPointF position)
{
    if (button >= std::size(buttons) || action > Release)
        return;
    const Qt::MouseButton qt_button = buttons[button];
    buttons_.setFlag(qt_button, action == Press);
    // Without modifiers, whatever keys are held: a click means the same at all times.
    send(window,
         QMouseEvent(action == Press ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease,
                     position, window.mapToGlobal(position), qt_button, buttons_, Qt::NoModifier,
                     QPointingDevice::primaryPointingDevice()));
}

void InputState::mouse_move(QWindow& window, QPointF position)
{
    if (position == position_)
        return;
    position_ = position;
    send(window,
         QMouseEvent(QEvent::MouseMove, position, window.mapToGlobal(position), Qt::NoButton,
                     buttons_, modifiers_, QPointingDevice::primaryPointingDevice()));
}

void InputState::mouse_wheel(QWindow& window, QPointF position, int notches) const
{
    send(window,
         QWheelEvent(position, window.mapToGlobal(position), QPoint(), QPoint(0, notches * notch),
                     Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false,
                     Qt::MouseEventNotSynthesized, QPointingDevice::primaryPointingDevice()));
}

bool InputState::key_event(QWindow& window, int key, quint16 action, QString text)
{
    if (action > Release)
        return false;
    if (action == Release)
        modifiers_ = Qt::NoModifier;
    if (const auto modifier = take_modifier(key, text))
        modifiers_ = *modifier;
    send(window,
         QKeyEvent(action == Press ? QEvent::KeyPress : QEvent::KeyRelease, key, modifiers_, text));
    return true;
}

}  // namespace marlune
