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
 * Leads a view's pages to its channel. The browser item has a channel of its own, on which there is this
 * gate and nothing else. When a page asks there what is published, which the page script does before
 * any script of the page can run, its end is taken from that channel and connected to the real one by a
 * PageTransport. No page reaches the real one in another way.
 */
class PageGate : public QObject {
    Q_OBJECT
    /** Read by the browser item's channel, for a page that asks. */
    Q_PROPERTY(bool let_in READ let_in CONSTANT FINAL)

public:
    PageGate();
    ~PageGate() override;

    /** From the browser item's channel to the view's, both of the present scene. `view` is for messages. */
    void lead(QWebChannel* from, QWebChannel* to, const QString& view);

    /** Another page is about to come. */
    void expect_page();

private:
    bool let_in();

    QPointer<QWebChannel> from_, to_;
    QString view_;
    std::vector<QPointer<db::PageTransport>> transports_;
};

}  // namespace marlune
