#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class QWebChannel;

namespace marlune {

namespace db {
class PageTransport;
}  // namespace db

/**
 * Connects a view's pages to its channel. The browser item has a channel of its own, which contains
 * only this gate. When a page requests the list of published objects there, which the page script
 * does before any script of the page can run, the page's transport is taken from that channel and
 * connected to the real one by a PageTransport. There is no other way for a page to reach the real
 * channel.
 */
class PageGate : public QObject {
    Q_OBJECT
    /** The browser item's channel reads this property for a page that requests it. */
    Q_PROPERTY(bool let_in READ let_in CONSTANT FINAL)

public:
    PageGate();
    ~PageGate() override;

    /**
     * Connects the browser item's channel to the view's channel, both of the current scene. `view`
     * is the name for messages.
     */
    void lead(QWebChannel* from, QWebChannel* to, const QString& view);

    /** A new page is about to load. */
    void expect_page();

private:
    bool let_in();

    QPointer<QWebChannel> from_, to_;
    QString view_;
    std::vector<QPointer<db::PageTransport>> transports_;
};

}  // namespace marlune
