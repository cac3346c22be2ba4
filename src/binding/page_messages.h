#pragma once

#include <QJsonValue>
#include <QLatin1StringView>
#include <QtTypes>

/** The messages between a page and the channel: those of Qt's qwebchannel.js, and additions of our own. */
namespace marlune::db {

enum class MessageType {
    Signal = 1,
    PropertyUpdate = 2,
    Init = 3,
    Idle = 4,
    InvokeMethod = 6,
    ConnectToSignal = 7,
    DisconnectFromSignal = 8,
    SetProperty = 9,
    Response = 10,
    /** Our own, to our own page script only: several messages in one. */
    Bundle = 100,
};

namespace key {

constexpr QLatin1StringView args("args");
constexpr QLatin1StringView data("data");
constexpr QLatin1StringView id("id");
constexpr QLatin1StringView method("method");
constexpr QLatin1StringView object("object");
constexpr QLatin1StringView properties("properties");
constexpr QLatin1StringView property("property");
constexpr QLatin1StringView signal("signal");
constexpr QLatin1StringView signals_("signals");
constexpr QLatin1StringView type("type");
constexpr QLatin1StringView value("value");

// Our own page script's, with its questions for descriptions. It takes bundles, and so begins a page:
constexpr QLatin1StringView bundles("bundles");
// Which objects it wants to have described; without this, all.
constexpr QLatin1StringView objects("objects");

}  // namespace key

/** About as many characters as its JSON text has. */
qsizetype json_size(const QJsonValue& value);

}  // namespace marlune::db
