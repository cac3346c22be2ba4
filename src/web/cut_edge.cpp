#include "web/cut_edge.h"

#include <QColor>
#include <QFont>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace marlune {

namespace {

// In px of the texture.
constexpr qreal edge_width = 56;
constexpr int ellipsis_size = 28;
constexpr qreal fade_end = 0.4;
constexpr QColor ground(0x0f, 0x23, 0x40);
constexpr QColor ink(0xf6, 0xef, 0xdd);

}  // namespace

CutEdge::CutEdge()
{
    setVisible(false);
    setZ(1);
}

void CutEdge::mark(QQuickItem& popup)
{
    setParentItem(&popup);
    setSize({std::min(edge_width, popup.width()), popup.height()});
    setX(popup.width() - width());
    setVisible(true);
}

void CutEdge::paint(QPainter* painter)
{
    QLinearGradient fade(0, 0, width(), 0);
    fade.setColorAt(0, Qt::transparent);
    fade.setColorAt(fade_end, ground);
    painter->fillRect(boundingRect(), fade);

    QFont font = painter->font();
    font.setPixelSize(ellipsis_size);
    painter->setFont(font);
    painter->setPen(ink);
    painter->drawText(boundingRect().adjusted(width() * fade_end, 0, 0, 0), Qt::AlignCenter,
                      QStringLiteral("\u2026"));
}

}  // namespace marlune
