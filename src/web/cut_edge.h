#pragma once

#include <QQuickPaintedItem>

namespace marlune {

/** Marks the right edge of a truncated popup: the popup fades out, with an ellipsis. */
class CutEdge : public QQuickPaintedItem {
    Q_OBJECT

public:
    CutEdge();

    /** Shows the mark at the right edge of `popup`. */
    void mark(QQuickItem& popup);
    void hide() { setVisible(false); }

    void paint(QPainter* painter) override;
};

}  // namespace marlune
