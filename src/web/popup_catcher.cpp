#include "web/popup_catcher.h"

#include "runtime/application.h"
#include "web/cut_edge.h"
#include "web/engine_version.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace marlune {

namespace {

/** The deepest page of the engine that covers `point` of the scene; null without one. */
QQuickItem* page_at(QQuickItem* item, QPointF point)
{
    const QList<QQuickItem*> children = item->childItems();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
        if (QQuickItem* const page = page_at(*child, point))
            return page;
    }
    const bool is_page = item->isVisible() && item->inherits("QQuickWebEngineView");
    return is_page && item->contains(item->mapFromScene(point)) ? item : nullptr;
}

// A popup that is longer or wider than the view is drawn smaller, but not beyond these scales.
constexpr qreal smallest_for_length = 0.25;
constexpr qreal smallest_for_width = 0.5;

// What the engine may draw of a popup that is cut, in px: as much as any list needs that a person is to
// read. Of rows that are longer still, it shows the end.
constexpr qreal longest_row = 8192;
constexpr qreal largest_area = 4.0 * 1024 * 1024;

// The engine of Qt 6.11 draws the whole of a popup that is drawn smaller, whatever is cut of it.
constexpr bool draws_whole_if_scaled = engine_is_new;

/** How a popup gets into the view. */
struct Fit {
    QSizeF size;  // of the popup itself
    qreal scale = 1;
    QSizeF shown;  // in px of the view
    bool cut = false;  // at the right
};

/**
 * The engine knows the screen, but not the view: to it there is always room enough, and a page can want
 * a popup of any size. Nor can the engine be told, so what is too large is drawn smaller; what would
 * be too narrow to read then is cut.
 */
Fit fit(QSizeF wanted, QSizeF room)
{
    Fit result{wanted, 1, wanted};
    if (wanted.isEmpty() || room.isEmpty())
        return result;
    const qreal wide = room.width() / wanted.width();
    result.cut = wide < smallest_for_width;
    result.scale = std::clamp(room.height() / wanted.height(), smallest_for_length, 1.0);
    if (!result.cut)
        result.scale = std::min(result.scale, wide);
    else if (draws_whole_if_scaled && wanted.width() * wanted.height() > largest_area)
        result.scale = 1;
    result.size.setHeight(std::min(wanted.height(), std::ceil(room.height() / result.scale)));
    if (result.cut) {
        const qreal most = std::min(longest_row, largest_area / result.size.height());
        result.size.setWidth(std::min(wanted.width(), std::max(most, room.width() / result.scale)));
    }
    result.shown = (result.size * result.scale).boundedTo(room);
    return result;
}

/** Where a popup of this length begins, so that it ends inside the view if there is any room. */
qreal kept_inside(qreal begin, qreal length, qreal room)
{
    return std::clamp(begin, 0.0, std::max(0.0, room - length));
}

/** One popup's window, from its creation to its end. Child of that window. */
class Popup : public QObject {
public:
    explicit Popup(QWindow* window) : QObject(window), window_(window)
    {
        // Emitted first thing in show(), before there would be a platform window.
        connect(window, &QWindow::visibleChanged, this, &Popup::follow_visibility);
        connect(window, &QWindow::xChanged, this, &Popup::place);
        connect(window, &QWindow::yChanged, this, &Popup::place);
        connect(window, &QWindow::widthChanged, this, &Popup::place);
        connect(window, &QWindow::heightChanged, this, &Popup::place);
        window->installEventFilter(this);
        frame_.setClip(true);
        frame_.setZ(1);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // In Qt 6.11 the content has its window's focus. When it loses that, the engine ends the popup.
        if (watched == content_)
            return event->type() == QEvent::FocusOut;
        // The window is deleted while it is shown, by the engine or with its parent. Its destructor
        // takes it from the parent, and a shown window without one is made in the window system.
        if (event->type() == QEvent::ParentWindowAboutToChange)
            window_->setVisible(false);
        return QObject::eventFilter(watched, event);
    }

private:
    void follow_visibility(bool visible) { visible ? take_content() : give_content_back(); }

    void take_content()
    {
        auto* const popup = qobject_cast<QQuickWindow*>(window_);
        auto* const scene = qobject_cast<QQuickWindow*>(window_->parent());
        if (!popup || !scene || popup->contentItem()->childItems().isEmpty())
            return;
        QQuickItem* const page =
            page_at(scene->contentItem(), scene->mapFromGlobal(popup->position()));
        frame_.setParentItem(page ? page : scene->contentItem());
        content_ = popup->contentItem()->childItems().first();
        content_->installEventFilter(this);
        content_->setParentItem(&frame_);
        // The engine makes frames of the size that its item has once all have heard of a new one. So
        // it is to be bounded at once: when the window changes, it is too late.
        connect(content_, &QQuickItem::widthChanged, this, &Popup::bound);
        connect(content_, &QQuickItem::heightChanged, this, &Popup::bound);
        place();
    }

    void give_content_back()
    {
        auto* const popup = qobject_cast<QQuickWindow*>(window_);
        edge_.hide();
        frame_.setParentItem(nullptr);
        if (content_)
            content_->disconnect(this);
        if (content_ && popup)
            content_->setParentItem(popup->contentItem());
        content_ = nullptr;
    }

    void place()
    {
        if (!content_ || !frame_.parentItem())
            return;
        const QQuickItem& page = *frame_.parentItem();
        // A calendar that changes its size moves its window to the corner as well.
        if (!window_->position().isNull())
            anchor_ = window_->position();
        const QPointF at = page.mapFromGlobal(anchor_);
        // The window also follows what its content has been given here: that is no new wish.
        if (window_->size() != given_)
            wanted_ = window_->size();
        const Fit found = fit(wanted_, page.size());
        given_ = found.size.toSize();
        content_->setTransformOrigin(QQuickItem::TopLeft);
        content_->setScale(found.scale);
        content_->setSize(found.size);
        content_->setPosition({});
        frame_.setSize(found.shown);
        frame_.setPosition({kept_inside(at.x(), found.shown.width(), page.width()),
                            kept_inside(at.y(), found.shown.height(), page.height())});
        found.cut ? edge_.mark(frame_) : edge_.hide();
    }

    void bound()
    {
        if (content_ && frame_.parentItem())
            content_->setSize(fit(content_->size(), frame_.parentItem()->size()).size);
    }

    QWindow* const window_;
    QPoint anchor_;
    QSize wanted_;
    QSize given_;
    QPointer<QQuickItem> content_;
    QQuickItem frame_;  // cuts it
    CutEdge edge_;
};

/** The window whose content `object` is; null where it is none. */
QQuickWindow* window_with_content(QObject* object)
{
    auto* const item = qobject_cast<QQuickItem*>(object);
    QQuickWindow* const window = item ? item->window() : nullptr;
    return window && window->contentItem() == item ? window : nullptr;
}

/** Windows that a scene's own QML makes are of other classes. */
void adopt_popup(QWindow* popup, QWindow* scene)
{
    if (popup->metaObject() == &QQuickWindow::staticMetaObject
        && qobject_cast<QQuickWindow*>(scene))
        popup->setParent(scene);
}

void catch_popup(QObject* parent, QObject* child)
{
    // Its constructor is still running: it calls itself a QWindow, but is not marked as one.
    if (qobject_cast<QQuickWindow*>(parent)
        && child->metaObject()->inherits(&QWindow::staticMetaObject)) {
        new Popup(static_cast<QWindow*>(child));
        return;
    }
    // In Qt 6.11 the engine makes the window without a parent and gives it the page's window as its
    // transient one. Before that, as every window does, it has given its content a child.
    if (QQuickWindow* const window = window_with_content(parent))
        QObject::connect(window, &QWindow::transientParentChanged, window,
                         [window](QWindow* scene) { adopt_popup(window, scene); });
}

}  // namespace

void install_popup_catcher()
{
    Application::set_child_watcher(catch_popup);
}

}  // namespace marlune
