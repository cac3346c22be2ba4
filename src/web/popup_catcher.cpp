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

/**
 * Returns the deepest page of the engine that covers `point` of the scene; null if there is none.
 */
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

// A popup that is longer or wider than the view is scaled down, but not below these scales.
constexpr qreal smallest_for_length = 0.25;
constexpr qreal smallest_for_width = 0.5;

// The size of a truncated popup that the engine may draw, in px: enough for any list that a person
// can read. Of longer rows, the end is shown.
constexpr qreal longest_row = 8192;
constexpr qreal largest_area = 4.0 * 1024 * 1024;

// The engine of Qt 6.11 draws a scaled popup as a whole, even where it is clipped.
constexpr bool draws_whole_if_scaled = engine_is_new;

/** The size and scale with which a popup fits into the view. */
struct Fit {
    QSizeF size;  // size of the popup itself
    qreal scale = 1;
    QSizeF shown;      // size in the view, in px
    bool cut = false;  // truncated at the right
};

/**
 * The engine knows the screen but not the view: it always assumes enough room, and a page can
 * request a popup of any size. The engine cannot be given another limit, so popups that are too
 * large are scaled down, and popups that would become too narrow to read are truncated.
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

/**
 * Returns the position at which a popup of this length ends inside the view, if there is enough
 * room.
 */
qreal kept_inside(qreal begin, qreal length, qreal room)
{
    return std::clamp(begin, 0.0, std::max(0.0, room - length));
}

/** Handles the window of one popup, from its creation to its destruction. Child of that window. */
class Popup : public QObject {
public:
    explicit Popup(QWindow* window) : QObject(window), window_(window)
    {
        // Emitted at the start of show(), before a platform window is created.
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
        // In Qt 6.11 the content has its window's focus, and the engine closes the popup when the
        // content loses it.
        if (watched == content_)
            return event->type() == QEvent::FocusOut;
        // The window is deleted while it is visible, by the engine or with its parent. Its
        // destructor removes it from the parent, and Qt creates a window of the window system for a
        // visible window without a parent.
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
        // The engine renders frames of its item's size once all receivers have handled a change of
        // it. The size must therefore be limited immediately: the window's signal comes too late.
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
        // A calendar that changes its size also moves its window to the corner.
        if (!window_->position().isNull())
            anchor_ = window_->position();
        const QPointF at = page.mapFromGlobal(anchor_);
        // The window also follows the size that place() has given the content: that is not a
        // new request.
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
    QQuickItem frame_;  // clips the popup
    CutEdge edge_;
};

/** Returns the window whose content item `object` is; null if it is none. */
QQuickWindow* window_with_content(QObject* object)
{
    auto* const item = qobject_cast<QQuickItem*>(object);
    QQuickWindow* const window = item ? item->window() : nullptr;
    return window && window->contentItem() == item ? window : nullptr;
}

/** Only for the engine's windows: windows that a scene's QML creates are of other classes. */
void adopt_popup(QWindow* popup, QWindow* scene)
{
    if (popup->metaObject() == &QQuickWindow::staticMetaObject
        && qobject_cast<QQuickWindow*>(scene))
        popup->setParent(scene);
}

void catch_popup(QObject* parent, QObject* child)
{
    // The window's constructor is still running: its meta-object is that of a QWindow already, but
    // QObject does not mark it as a window yet.
    if (qobject_cast<QQuickWindow*>(parent)
        && child->metaObject()->inherits(&QWindow::staticMetaObject)) {
        new Popup(static_cast<QWindow*>(child));
        return;
    }
    // In Qt 6.11 the engine creates the window without a parent and sets the page's window as its
    // transient parent. Before that, like every window, it adds a child to its content item.
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
