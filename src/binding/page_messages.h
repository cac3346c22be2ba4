#pragma once

#include <QJsonValue>
#include <QLatin1StringView>
#include <QtTypes>

/**
 * The messages between a page and the channel: those of Qt's qwebchannel.js, and this library's
 * additions.
 */
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
    /** An addition, only for the library's page script: several messages in one. */
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

// Additions of the library's page script to its requests for descriptions. The page accepts
// bundles, and thus starts a new page:
constexpr QLatin1StringView bundles("bundles");
// The names of the objects to describe; without this key, all objects.
constexpr QLatin1StringView objects("objects");

}  // namespace key

/** Returns the approximate number of characters of the value's JSON text. */
qsizetype json_size(const QJsonValue& value);

}  // namespace marlune::db
