#pragma once

#include <QQuickPaintedItem>

namespace marlune {

/** The right edge of a popup that goes on beyond the view: it fades out, with an ellipsis. */
class CutEdge : public QQuickPaintedItem {
    Q_OBJECT

public:
    CutEdge();

    /** Shows itself at the right edge of `popup`, which is drawn at `scale`. */
    void mark(QQuickItem& popup, qreal scale);
    void hide() { setVisible(false); }

    void paint(QPainter* painter) override;

private:
    qreal scale_ = 1;
};

}  // namespace marlune
