// The input half of View: the host's plain numbers become events of the offscreen window.

#include "views/view.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QQuickWindow>
#include <QWheelEvent>

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

// Qt Quick tells taps, double clicks and flicks by the events' times.
quint64 timestamp()
{
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    return static_cast<quint64>(now.count());
}

/** The one modifier that a key event brings; "Ctrl+c" loses the word and the sign after it. */
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

}  // namespace

QPointF View::to_global(QPointF position) const
{
    return window_->mapToGlobal(position);
}

void View::send(QEvent& event)
{
    QCoreApplication::sendEvent(window_.get(), &event);
}

void View::mouse_click(quint16 button, quint16 action, QPointF position)
{
    if (!window_ || button >= std::size(buttons) || action > Release)
        return;
    const Qt::MouseButton qt_button = buttons[button];
    pressed_buttons_.setFlag(qt_button, action == Press);
    // Without modifiers, whatever keys are held: a click means the same at all times.
    QMouseEvent event(action == Press ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease,
                      position, to_global(position), qt_button, pressed_buttons_, Qt::NoModifier,
                      QPointingDevice::primaryPointingDevice());
    event.setTimestamp(timestamp());
    send(event);
}

void View::mouse_move(QPointF position)
{
    if (!window_ || position == last_mouse_position_)
        return;
    last_mouse_position_ = position;
    QMouseEvent event(QEvent::MouseMove, position, to_global(position), Qt::NoButton,
                      pressed_buttons_, modifiers_, QPointingDevice::primaryPointingDevice());
    event.setTimestamp(timestamp());
    send(event);
}

void View::mouse_wheel(QPointF position, int notches)
{
    if (!window_)
        return;
    QWheelEvent event(position, to_global(position), QPoint(), QPoint(0, notches * notch),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false,
                      Qt::MouseEventNotSynthesized, QPointingDevice::primaryPointingDevice());
    event.setTimestamp(timestamp());
    send(event);
}

void View::key_event(int key, quint16 action, QString text)
{
    if (!window_ || action > Release)
        return;
    if (action == Release)
        modifiers_ = Qt::NoModifier;
    if (const auto modifier = take_modifier(key, text))
        modifiers_ = *modifier;
    QKeyEvent event(action == Press ? QEvent::KeyPress : QEvent::KeyRelease, key, modifiers_, text);
    event.setTimestamp(timestamp());
    send(event);
    // The scene is to have reacted when the host's call returns. Last: this view may go meanwhile.
    QCoreApplication::processEvents();
}

}  // namespace marlune
