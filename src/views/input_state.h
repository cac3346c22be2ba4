#pragma once

#include <QPointF>
#include <QString>

class QWindow;

namespace marlune {

/**
 * Sends the host's input to a scene's window as Qt events, and remembers the buttons and modifiers
 * that are held. Unknown buttons and actions are ignored. Positions are in px of the window.
 */
class InputState {
public:
    void mouse_click(QWindow& window, quint16 button, quint16 action, QPointF position);
    void mouse_move(QWindow& window, QPointF position);
    /** `notches` is positive away from the user. */
    void mouse_wheel(QWindow& window, QPointF position, int notches) const;
    /** False when no event was sent. */
    bool key_event(QWindow& window, int key, quint16 action, QString text);

private:
    Qt::MouseButtons buttons_;
    Qt::KeyboardModifiers modifiers_;
    QPointF position_;
};

}  // namespace marlune
