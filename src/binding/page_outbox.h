#pragma once

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <list>

namespace marlune::db {

/**
 * What is on its way to a page, in order. A page that hangs, has crashed or may run no scripts takes
 * nothing, so only so much is sent before it has answered. What comes meanwhile waits here: of each
 * property the last value only, of each object only whether it is there, and so many signals and answers.
 *
 * A client of Qt's channel answers each property update, also an empty one, by saying that it is idle.
 */
class PageOutbox : public QObject {
    Q_OBJECT

public:
    using Send = std::function<void(const QJsonObject&)>;

    /** Messages, and characters in them, that a page may have before it. */
    static constexpr qsizetype most_unanswered = 1000;
    static constexpr qsizetype largest_unanswered = 16 * 1024 * 1024;
    /** Signals that wait here, answers to calls of the page, and characters in either. */
    static constexpr qsizetype most_waiting = 10'000;
    static constexpr qsizetype most_answers_waiting = 50'000;
    static constexpr qsizetype largest_waiting = 64 * 1024 * 1024;
    /** All messages that wait here. */
    static constexpr qsizetype most_waiting_of_all = 100'000;

    /** `view` is for messages. */
    PageOutbox(Send send, const QString& view);

    /** It is sent by the end of the event loop's turn, if the page is with it. */
    void add(const QJsonObject& message);

    /** The page has answered. */
    void acknowledge();

    /** Another page is there, or a client in it that takes bundles: nothing of before is for it. */
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

    /** What waits in order and without a key, `most` messages of it. */
    struct Queue {
        bool is_full() const
        {
            return amount.messages > most || amount.characters > largest_waiting;
        }

        const char* name;
        qsizetype most;
        Amount amount;
        /** None of it is before this one. */
        Entries::iterator oldest;
        bool has_dropped = false;
    };

    /** Of what has no key. */
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
    /** The page has not taken all that was there for it when it was last sent something. */
    bool is_held_up_ = false;
    /** Sent before the question that is not answered yet, and since. */
    Amount asked_, sent_;
    bool is_asked_ = false;
};

}  // namespace marlune::db
