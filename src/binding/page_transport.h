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
 * Stands between a page and the channel. Pages are not trusted, and Qt's end of a channel lets them do
 * much that takes the host down: delete the published objects, break off the signals by which Qt follows
 * them, store references to them. So the channel gets only questions for descriptions and connections to
 * the signals that exist for pages; calls and writes, which may be of the members for pages only, are
 * served here, with plain data. All else is dropped, with one warning for each kind and page.
 *
 * Beyond what Qt's channel understands, a question for descriptions may name the objects that it is
 * about, and a write that has an "id" is answered with the value that the property has then.
 */
class PageTransport : public QWebChannelAbstractTransport {
    Q_OBJECT

public:
    /** What a page may send in one message, in characters of its JSON text. */
    static constexpr qsizetype largest_message = 16 * 1024 * 1024;

    /**
     * Connects the page, which owns this, to the channel. `view` is for messages. The page must not be
     * connected to a channel by itself.
     */
    PageTransport(QWebChannelAbstractTransport* page, QWebChannel* channel, const QString& view);

    /** Another page is about to come. It has warnings of its own. */
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
    /** The channel counts connections, so each is made once. */
    QSet<std::pair<const QObject*, int>> connected_;
};

}  // namespace marlune::db
