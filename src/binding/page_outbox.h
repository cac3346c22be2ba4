#pragma once

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <list>

namespace marlune::db {

/**
 * The messages to a page, in order. A page that hangs, has crashed or must not run scripts
 * processes no messages, so only a limited amount is sent before it has acknowledged. Later
 * messages wait here: for each property only the last value, for each object only whether it
 * exists, and a limited number of signals and answers.
 *
 * A client of Qt's channel acknowledges each property update, even an empty one, with the message
 * that it is idle.
 */
class PageOutbox : public QObject {
    Q_OBJECT

public:
    using Send = std::function<void(const QJsonObject&)>;

    /**
     * The number of messages, and of characters in them, that may be sent before the page
     * acknowledges.
     */
    static constexpr qsizetype most_unanswered = 1000;
    static constexpr qsizetype largest_unanswered = 16 * 1024 * 1024;
    /**
     * The number of waiting signals, of waiting answers to calls of the page, and of characters in
     * each.
     */
    static constexpr qsizetype most_waiting = 10'000;
    static constexpr qsizetype most_answers_waiting = 50'000;
    static constexpr qsizetype largest_waiting = 64 * 1024 * 1024;
    /** The number of all waiting messages. */
    static constexpr qsizetype most_waiting_of_all = 100'000;

    /** `view` is the name for messages in the log. */
    PageOutbox(Send send, const QString& view);

    /**
     * Adds a message. It is sent before the end of the event loop's turn if the page accepts
     * messages.
     */
    void add(const QJsonObject& message);

    /** The page has acknowledged. */
    void acknowledge();

    /**
     * A new page has started, or a client in it that accepts bundles: earlier messages are not for
     * it.
     */
    void begin_page();

private:
    struct Amount {
        qsizetype messages = 0, characters = 0;
    };

    struct Entry {
        QString key;
        QJsonObject message;
        qsizetype size = 0;
    };

    using Entries = std::list<Entry>;

    /** The waiting messages without a key, in order; at most `most` of them. */
    struct Queue {
        bool is_full() const
        {
            return amount.messages > most || amount.characters > largest_waiting;
        }

        const char* name;
        qsizetype most;
        Amount amount;
        /** No message of this queue is before this one. */
        Entries::iterator oldest;
        bool has_dropped = false;
    };

    /** Returns the queue of a message without a key. */
    Queue& queue_of(const Entry& entry);
    void add_update(const QJsonObject& update);
    bool cancels_what_waits(const QJsonObject& message);
    void append(Entry entry);
    Entry take(Entries::iterator entry);
    void drop_oldest();
    void drop_oldest_of(Queue& queue);
    void drop(Entries::iterator entry);
    void send_soon();
    void send_waiting();
    void send_some();
    void ask_for_answer(bool is_asked_already);
    bool may_send() const;

    Send send_;
    QString view_;
    bool takes_bundles_ = false;
    Entries waiting_;
    Queue signals_{"signals", most_waiting, {}, waiting_.end()};
    Queue answers_{"answers", most_answers_waiting, {}, waiting_.end()};
    QHash<QString, Entries::iterator> by_key_;
    bool is_scheduled_ = false;
    /** The page had not accepted all messages when the last ones were sent. */
    bool is_held_up_ = false;
    /** Sent before the last request for an acknowledgement, which is still open, and since then. */
    Amount asked_, sent_;
    bool is_asked_ = false;
};

}  // namespace marlune::db
