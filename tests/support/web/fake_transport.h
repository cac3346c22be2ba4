#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QWebChannelAbstractTransport>

#include <functional>
#include <utility>

namespace marlune::test {

/**
 * The channel's end of a connection whose other end is a function. Messages in both directions wait
 * for a turn of the event loop.
 */
class FakeTransport : public QWebChannelAbstractTransport {
public:
    using Receiver = std::function<void(const QJsonObject&)>;

    explicit FakeTransport(Receiver receiver) : receiver_(std::move(receiver)) {}

    /** Sends a message as the page. */
    void post(const QJsonObject& message)
    {
        QMetaObject::invokeMethod(
            this, [this, message] { emit messageReceived(message, this); }, Qt::QueuedConnection);
    }

    void sendMessage(const QJsonObject& message) override
    {
        QMetaObject::invokeMethod(
            this, [this, message] { receiver_(message); }, Qt::QueuedConnection);
    }

private:
    Receiver receiver_;
};

}  // namespace marlune::test
