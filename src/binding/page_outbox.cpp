#include "binding/page_outbox.h"

#include "binding/manager.h"
#include "binding/page_messages.h"

#include <QDebug>
#include <QJsonArray>
#include <QMetaObject>

#include <QMetaMethod>

#include <algorithm>
#include <iterator>
#include <utility>

namespace marlune::db {

namespace {

constexpr qsizetype largest_bundle = 64;
constexpr qsizetype most_before_a_question = 100;
constexpr QLatin1StringView manager_id("___cm");

using Manager = DataBindingContextManager;

/** The indices by which pages identify the manager's signals. */
struct ManagerSignals {
    int change = QMetaMethod::fromSignal(&Manager::propChanged).methodIndex();
    int coming = QMetaMethod::fromSignal(&Manager::objectRegistered).methodIndex();
    int going = QMetaMethod::fromSignal(&Manager::objectdeRegistered).methodIndex();
};

const ManagerSignals& manager_signals()
{
    static const ManagerSignals numbers;
    return numbers;
}

/** The relevant parts of a signal of the manager. */
struct ManagerSignal {
    explicit ManagerSignal(const QJsonObject& message)
        : index(message[key::type] == static_cast<int>(MessageType::Signal)
                        && message[key::object] == manager_id
                    ? message[key::signal].toInt(-1)
                    : -1),
          object_name(message[key::args][0].toString()),
          member_name(message[key::args][1].toString())
    {
    }

    bool is_change() const { return index == manager_signals().change; }
    bool is_coming() const { return index == manager_signals().coming; }
    bool is_going() const { return index == manager_signals().going; }

    int index;
    QString object_name, member_name;
};

QString coming_key(const QString& object_name)
{
    return '+' + object_name;
}

QString going_key(const QString& object_name)
{
    return '-' + object_name;
}

/** Returns the key of a message that the next one with the same key replaces; otherwise empty. */
QString key_of(const QJsonObject& message)
{
    const ManagerSignal signal(message);
    if (signal.is_change())
        return '=' + signal.object_name + QChar(0) + signal.member_name;
    if (signal.is_coming())
        return coming_key(signal.object_name);
    if (signal.is_going())
        return going_key(signal.object_name);
    return {};
}

QJsonObject update_message(const QJsonArray& data)
{
    return {{key::type, static_cast<int>(MessageType::PropertyUpdate)}, {key::data, data}};
}

bool is_update(const QJsonObject& message)
{
    return message[key::type] == static_cast<int>(MessageType::PropertyUpdate);
}

/** Returns the members of the later one, and those of the earlier one that the later one lacks. */
QJsonObject merged(const QJsonObject& earlier, const QJsonObject& later)
{
    QJsonObject result = earlier;
    for (auto member = later.begin(); member != later.end(); ++member)
        result[member.key()] = member.value();
    return result;
}

QJsonObject merged_update(const QJsonObject& earlier, const QJsonObject& later)
{
    QJsonObject result = later;
    for (const QLatin1StringView part : {key::signals_, key::properties})
        result[part] = merged(earlier[part].toObject(), later[part].toObject());
    return result;
}

}  // namespace

PageOutbox::PageOutbox(Send send, const QString& view) : send_(std::move(send)), view_(view) {}

void PageOutbox::add(const QJsonObject& message)
{
    if (is_update(message)) {
        for (const QJsonValue update : message[key::data].toArray())
            add_update(update.toObject());
    } else if (!is_held_up_ || !cancels_what_waits(message)) {
        append({key_of(message), message, json_size(message)});
    }
    send_soon();
}

void PageOutbox::acknowledge()
{
    is_asked_ = false;
    asked_ = {};
    if (is_held_up_)
        send_waiting();
}

void PageOutbox::begin_page()
{
    takes_bundles_ = true;
    waiting_.clear();
    for (Queue* const queue : {&signals_, &answers_}) {
        queue->amount = {};
        queue->oldest = waiting_.end();
        queue->has_dropped = false;
    }
    by_key_.clear();
    is_held_up_ = is_asked_ = false;
    asked_ = sent_ = {};
}

/** Adds the update of one object. */
void PageOutbox::add_update(const QJsonObject& update)
{
    const QString update_key = ':' + update[key::object].toString();
    QJsonObject whole = update;
    if (const auto found = by_key_.constFind(update_key); is_held_up_ && found != by_key_.cend()) {
        const QJsonObject earlier = (*found)->message[key::data][0].toObject();
        whole = merged_update(earlier, update);
    }
    const QJsonObject message = update_message({whole});
    append({update_key, message, json_size(message)});
}

/**
 * If the messages that an object has been registered and removed both wait, the page needs neither
 * of them. A removal needs to be reported only once.
 */
bool PageOutbox::cancels_what_waits(const QJsonObject& message)
{
    const ManagerSignal signal(message);
    if (!signal.is_going())
        return false;
    const auto coming = by_key_.constFind(coming_key(signal.object_name));
    if (coming == by_key_.cend())
        return false;
    take(*coming);
    return true;
}

void PageOutbox::append(Entry entry)
{
    const QString key = entry.key;
    if (const auto found = by_key_.constFind(key); is_held_up_ && found != by_key_.cend())
        take(*found);
    if (key.isEmpty()) {
        Amount& amount = queue_of(entry).amount;
        ++amount.messages;
        amount.characters += entry.size;
    }
    waiting_.push_back(std::move(entry));
    const auto last = std::prev(waiting_.end());
    for (Queue* const queue : {&signals_, &answers_}) {
        if (queue->oldest == waiting_.end())
            queue->oldest = last;
    }
    if (!key.isEmpty())
        by_key_[key] = last;
    if (is_held_up_)
        drop_oldest();
}

PageOutbox::Entry PageOutbox::take(Entries::iterator entry)
{
    if (const auto found = by_key_.constFind(entry->key);
        found != by_key_.cend() && *found == entry)
        by_key_.erase(found);
    if (entry->key.isEmpty()) {
        Amount& amount = queue_of(*entry).amount;
        --amount.messages;
        amount.characters -= entry->size;
    }
    Entry result = std::move(*entry);
    for (Queue* const queue : {&signals_, &answers_}) {
        if (queue->oldest == entry)
            queue->oldest = std::next(entry);
    }
    waiting_.erase(entry);
    return result;
}

PageOutbox::Queue& PageOutbox::queue_of(const Entry& entry)
{
    const bool is_answer = entry.message[key::type] == static_cast<int>(MessageType::Response);
    return is_answer ? answers_ : signals_;
}

/**
 * Drops messages without a key first: of the others, only the last counts, and their number is
 * limited by the host's objects.
 */
void PageOutbox::drop_oldest()
{
    drop_oldest_of(signals_);
    drop_oldest_of(answers_);
    while (std::ssize(waiting_) > most_waiting_of_all)
        drop(waiting_.begin());
}

void PageOutbox::drop_oldest_of(Queue& queue)
{
    const auto is_of_queue = [&](const Entry& entry) {
        return entry.key.isEmpty() && &queue_of(entry) == &queue;
    };
    while (queue.is_full())
        drop(std::find_if(queue.oldest, waiting_.end(), is_of_queue));
}

void PageOutbox::drop(Entries::iterator entry)
{
    Queue& queue = queue_of(*entry);
    if (!std::exchange(queue.has_dropped, true))
        qWarning().noquote() << view_
                + ": the page does not process its messages fast enough. The oldest " + queue.name
                + " are dropped.";
    take(entry);
}

void PageOutbox::send_soon()
{
    if (is_held_up_)
        return;
    if (std::ssize(waiting_) >= largest_bundle)
        return send_waiting();
    if (!std::exchange(is_scheduled_, true))
        QMetaObject::invokeMethod(this, &PageOutbox::send_waiting, Qt::QueuedConnection);
}

void PageOutbox::send_waiting()
{
    is_scheduled_ = false;
    while (!waiting_.empty() && may_send())
        send_some();
    is_held_up_ = !waiting_.empty();
}

void PageOutbox::send_some()
{
    QJsonArray messages;
    qsizetype size = 0;
    bool has_update = false;
    while (!waiting_.empty() && messages.size() < largest_bundle && size < largest_unanswered) {
        const Entry entry = take(waiting_.begin());
        has_update = has_update || is_update(entry.message);
        size += entry.size;
        messages.append(entry.message);
    }
    sent_.messages += messages.size();
    sent_.characters += size;
    const bool is_bundle = takes_bundles_ && messages.size() > 1;
    if (is_bundle)
        send_({{key::type, static_cast<int>(MessageType::Bundle)}, {key::data, messages}});
    for (qsizetype i = 0; !is_bundle && i < messages.size(); ++i)
        send_(messages[i].toObject());
    if (has_update || (!is_asked_ && sent_.messages >= most_before_a_question)
        || (!is_asked_ && !may_send()))
        ask_for_answer(has_update);
}

bool PageOutbox::may_send() const
{
    return asked_.messages + sent_.messages < most_unanswered
        && asked_.characters + sent_.characters < largest_unanswered;
}

/** An update that has just been sent already requests an acknowledgement. */
void PageOutbox::ask_for_answer(bool is_asked_already)
{
    if (!is_asked_already)
        send_(update_message({}));
    is_asked_ = true;
    asked_.messages += std::exchange(sent_.messages, 0);
    asked_.characters += std::exchange(sent_.characters, 0);
}

}  // namespace marlune::db
