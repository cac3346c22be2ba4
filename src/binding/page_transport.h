#pragma once

#include "binding/page_outbox.h"
#include "binding/page_warnings.h"

#include <QHash>
#include <QJsonObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QWebChannelAbstractTransport>

#include <utility>

class QWebChannel;

namespace marlune::db {

/**
 * Filters the messages between a page and the channel. Pages are not trusted, and Qt's end of a
 * channel lets them do much that crashes the host: delete the published objects, disconnect the
 * signals by which Qt tracks them, store references to them. The channel therefore gets only
 * requests for descriptions and connections to the signals that are meant for pages. Calls and
 * writes, which are allowed only for the members meant for pages, are handled here, with plain
 * data. All other messages are dropped, with one warning per kind and page.
 *
 * In addition to the protocol of Qt's channel, a request for descriptions may name its objects, and
 * a write that has an "id" is answered with the property's value after it.
 */
class PageTransport : public QWebChannelAbstractTransport {
    Q_OBJECT

public:
    /** The size limit of one message of a page, in characters of its JSON text. */
    static constexpr qsizetype largest_message = 16 * 1024 * 1024;

    /**
     * Connects the page, which owns this object, to the channel. `view` is the name for messages in
     * the log. The page must not be connected to a channel itself.
     */
    PageTransport(QWebChannelAbstractTransport* page, QWebChannel* channel, const QString& view);

    /** A new page is about to load. It has its own limit of warnings. */
    void expect_page();

    void sendMessage(const QJsonObject& message) override;

private:
    void receive(const QJsonObject& message);
    void initialize(const QJsonObject& message);
    void describe(const QJsonObject& message);
    void call(const QJsonObject& message);
    QVariant called(const QJsonObject& message);
    void set_property(const QJsonObject& message);
    void connect_signal(const QJsonObject& message);
    bool is_for_pages(const QObject* object, int signal) const;
    void forward(const QJsonObject& message);
    void answer(const QJsonObject& question, const QJsonValue& data);
    void refuse(const char* kind, const QString& what);
    QObject* find(const QJsonObject& message);

    QPointer<QWebChannelAbstractTransport> page_;
    QPointer<QWebChannel> channel_;
    QString view_;
    PageOutbox outbox_;
    WarningShare warnings_;
    QSet<QString> refused_;
    /** The channel counts connections, so each is made only once. */
    QSet<std::pair<const QObject*, int>> connected_;
};

}  // namespace marlune::db
