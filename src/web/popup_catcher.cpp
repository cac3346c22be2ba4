#include "web/popup_catcher.h"

#include "runtime/application.h"

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>

#include <algorithm>

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
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
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
        content_ = popup->contentItem()->childItems().first();
        content_->setParentItem(page ? page : scene->contentItem());
        content_->setZ(1);
        place();
    }

    void give_content_back()
    {
        auto* const popup = qobject_cast<QQuickWindow*>(window_);
        if (content_ && popup)
            content_->setParentItem(popup->contentItem());
        content_ = nullptr;
    }

    void place()
    {
        if (!content_ || !content_->parentItem())
            return;
        const QQuickItem& page = *content_->parentItem();
        const QSizeF size(window_->size());
        // A calendar that changes its size moves its window to the corner as well.
        if (!window_->position().isNull())
            anchor_ = window_->position();
        const QPointF at = page.mapFromGlobal(anchor_);
        // The engine knows the screen, but not the view: to it there is always room enough. Nor can
        // it be told, so what is too large is drawn smaller.
        const qreal scale =
            std::min({1.0, page.width() / size.width(), page.height() / size.height()});
        content_->setTransformOrigin(QQuickItem::TopLeft);
        content_->setScale(scale);
        content_->setSize(size);
        content_->setPosition({kept_inside(at.x(), size.width() * scale, page.width()),
                               kept_inside(at.y(), size.height() * scale, page.height())});
    }

    QWindow* const window_;
    QPoint anchor_;
    QPointer<QQuickItem> content_;
};

void catch_popup(QObject* parent, QObject* child)
{
    // Its constructor is still running: it calls itself a QWindow, but is not marked as one.
    if (qobject_cast<QQuickWindow*>(parent)
        && child->metaObject()->inherits(&QWindow::staticMetaObject))
        new Popup(static_cast<QWindow*>(child));
}

}  // namespace

void install_popup_catcher()
{
    Application::set_child_watcher(catch_popup);
}

}  // namespace marlune
