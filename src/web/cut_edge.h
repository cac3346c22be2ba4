#pragma once

#include <QQuickPaintedItem>

namespace marlune {

/** The right edge of a popup that goes on beyond the view: it fades out, with an ellipsis. */
class CutEdge : public QQuickPaintedItem {
    Q_OBJECT

public:
    CutEdge();

    /** Shows itself at the right edge of `popup`. */
    void mark(QQuickItem& popup);
    void hide() { setVisible(false); }

    void paint(QPainter* painter) override;
};

}  // namespace marlune
