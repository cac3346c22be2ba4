#include "binding/page_transport.h"

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/method_info.h"
#include "binding/page_messages.h"
#include "binding/property_info.h"

#include <QDebug>
#include <QJsonArray>
#include <QMetaMethod>
#include <QVariant>
#include <QWebChannel>

namespace marlune::db {

namespace {

bool is_published_kind(const QObject* object)
{
    return qobject_cast<const DataBindingContextManager*>(object)
        || qobject_cast<const DBAbstractContextObject*>(object)
        || qobject_cast<const DBMethodInfo*>(object) || qobject_cast<const DBPropertyInfo*>(object);
}

/** Requests the description of all objects on a channel, once. */
class Question : public QWebChannelAbstractTransport {
public:
    QJsonValue asked_of(QWebChannel& channel)
    {
        channel.connectTo(this);
        emit messageReceived({{key::type, static_cast<int>(MessageType::Init)}, {key::id, 0}},
                             this);
        return answer_;
    }

    void sendMessage(const QJsonObject& message) override { answer_ = message[key::data]; }

private:
    QJsonValue answer_;
};

}  // namespace

PageTransport::PageTransport(QWebChannelAbstractTransport* page, QWebChannel* channel,
                             const QString& view)
    : QWebChannelAbstractTransport(page),
      page_(page),
      channel_(channel),
      view_(view),
      outbox_(
          [this](const QJsonObject& message) {
              if (page_)
                  page_->sendMessage(message);
          },
          view)
{
    connect(page, &QWebChannelAbstractTransport::messageReceived, this,
            [this](const QJsonObject& message) { receive(message); });
    channel->connectTo(this);
}

void PageTransport::expect_page()
{
    warnings_.renew();
    refused_.clear();
}

/**
 * The channel stores property updates for a client that is not idle, without a limit. To the
 * channel, this client is therefore always idle.
 */
void PageTransport::sendMessage(const QJsonObject& message)
{
    outbox_.add(message);
    if (message[key::type] == static_cast<int>(MessageType::PropertyUpdate))
        forward({{key::type, static_cast<int>(MessageType::Idle)}});
}

void PageTransport::receive(const QJsonObject& message)
{
    const WarningScope scope(warnings_);
    const auto type = static_cast<MessageType>(message[key::type].toInt());
    if (json_size(message) > largest_message) {
        refuse("a message that is too large", {});
        return answer(message,
                      type == MessageType::InvokeMethod ? QJsonValue::Null : QJsonValue::Undefined);
    }
    switch (type) {
    case MessageType::Init:
        return initialize(message);
    case MessageType::Idle:
        return outbox_.acknowledge();
    case MessageType::InvokeMethod:
        return call(message);
    case MessageType::SetProperty:
        return set_property(message);
    case MessageType::ConnectToSignal:
        return connect_signal(message);
    case MessageType::DisconnectFromSignal:
        return;  // other clients of the page may be connected; this one ignores the signal
    default:
        refuse("a message of an unknown type", {});
    }
}

void PageTransport::initialize(const QJsonObject& message)
{
    if (!message.contains(key::id))
        return refuse("a request without a number", {});
    if (message[key::bundles].toBool())
        outbox_.begin_page();
    if (message.contains(key::objects))
        return describe(message);
    forward({{key::type, static_cast<int>(MessageType::Init)}, {key::id, message[key::id]}});
    forward({{key::type, static_cast<int>(MessageType::Idle)}});
}

/**
 * The channel describes all of its objects or none, so the requested objects get a channel of their
 * own.
 */
void PageTransport::describe(const QJsonObject& message)
{
    if (!channel_)
        return;
    QWebChannel channel;
    const QHash<QString, QObject*> published = channel_->registeredObjects();
    for (const QJsonValue name : message[key::objects].toArray()) {
        QObject* const object = published.value(name.toString());
        if (const auto* const whole = qobject_cast<DBAbstractContextObject*>(object))
            channel.registerObjects(whole->parts());
        else if (is_published_kind(object))
            channel.registerObject(name.toString(), object);
    }
    answer(message, Question().asked_of(channel));
}

void PageTransport::call(const QJsonObject& message)
{
    if (!message.contains(key::id))
        return refuse("a call without a number", {});
    const QPointer<PageTransport> guard(this);
    const QVariant result = called(message);
    if (guard)  // the host may have closed the page
        answer(message, QJsonValue::fromVariant(result));
}

QVariant PageTransport::called(const QJsonObject& message)
{
    QObject* const target = find(message);
    if (!target)
        return {};
    const QString method = message[key::method].toString();
    const QJsonArray arguments = message[key::args].toArray();
    auto* const object = qobject_cast<DBAbstractContextObject*>(target);
    if (object && method == QLatin1StringView("___invoke_method") && arguments.size() == 2)
        return object->___invoke_method(arguments[0].toVariant(), arguments[1].toVariant());
    if (object && method == QLatin1StringView("get_method_signature") && arguments.size() == 1)
        return object->get_method_signature(arguments[0].toVariant());
    refuse("a call of a method that pages cannot call", method);
    return {};
}

void PageTransport::set_property(const QJsonObject& message)
{
    static const int value_index = DBPropertyInfo::staticMetaObject.indexOfProperty("value");
    QObject* const target = find(message);
    if (!target)
        return answer(message, QJsonValue::Undefined);
    QPointer<DBPropertyInfo> property = qobject_cast<DBPropertyInfo*>(target);
    if (!property || message[key::property].toInt(-1) != value_index) {
        refuse("a write to a property that pages cannot write", message[key::object].toString());
        return answer(message, QJsonValue::Undefined);
    }
    const QPointer<PageTransport> guard(this);
    property->set_value(message[key::value].toVariant());
    if (guard && property)
        answer(message, QJsonValue::fromVariant(property->value()));
}

void PageTransport::connect_signal(const QJsonObject& message)
{
    const QObject* const object = find(message);
    if (!object)
        return;
    const int signal = message[key::signal].toInt(-1);
    if (!is_for_pages(object, signal))
        return refuse("a connection to a signal that pages cannot use",
                      message[key::object].toString());
    const auto connection = std::pair(object, signal);
    if (connected_.contains(connection))
        return;
    connected_.insert(connection);
    connect(object, &QObject::destroyed, this,
            [this, connection] { connected_.remove(connection); });
    forward({{key::type, static_cast<int>(MessageType::ConnectToSignal)},
             {key::object, message[key::object]},
             {key::signal, signal}});
}

/**
 * Excludes signals that the channel itself needs for all objects, such as that an object is
 * destroyed.
 */
bool PageTransport::is_for_pages(const QObject* object, int signal) const
{
    const QMetaObject& meta = *object->metaObject();
    return is_published_kind(object) && signal >= meta.methodOffset()
        && meta.method(signal).methodType() == QMetaMethod::Signal;
}

void PageTransport::forward(const QJsonObject& message)
{
    emit messageReceived(message, this);
}

void PageTransport::answer(const QJsonObject& question, const QJsonValue& data)
{
    if (!question.contains(key::id))
        return;
    QJsonObject response{{key::type, static_cast<int>(MessageType::Response)},
                         {key::id, question[key::id]}};
    if (!data.isUndefined())
        response[key::data] = data;
    outbox_.add(response);
}

void PageTransport::refuse(const char* kind, const QString& what)
{
    if (refused_.contains(kind))
        return;
    refused_.insert(kind);
    QString text = view_ + ": a page has sent " + kind;
    if (!what.isEmpty())
        text += " (\"" + shown(what) + "\")";
    qWarning().noquote() << text
            + ". It is dropped. Further messages of this kind are not reported.";
}

QObject* PageTransport::find(const QJsonObject& message)
{
    const QString name = message[key::object].toString();
    QObject* const object = channel_ ? channel_->registeredObjects().value(name) : nullptr;
    if (!object)
        refuse("a message to an object that does not exist", name);
    return object;
}

}  // namespace marlune::db
