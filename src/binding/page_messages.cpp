#include "binding/page_messages.h"

#include <QJsonArray>
#include <QJsonObject>

namespace marlune::db {

namespace {

constexpr qsizetype size_of_scalar = 4;
constexpr qsizetype size_of_brackets = 2;
constexpr qsizetype size_of_separator = 1;

qsizetype array_size(const QJsonArray& array)
{
    qsizetype size = size_of_brackets;
    for (const QJsonValue element : array)
        size += json_size(element) + size_of_separator;
    return size;
}

qsizetype object_size(const QJsonObject& object)
{
    qsizetype size = size_of_brackets;
    for (auto member = object.begin(); member != object.end(); ++member) {
        size += member.key().size() + size_of_brackets + size_of_separator;
        size += json_size(member.value()) + size_of_separator;
    }
    return size;
}

}  // namespace

qsizetype json_size(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::String:
        return value.toString().size() + size_of_brackets;
    case QJsonValue::Array:
        return array_size(value.toArray());
    case QJsonValue::Object:
        return object_size(value.toObject());
    default:
        return size_of_scalar;
    }
}

}  // namespace marlune::db
