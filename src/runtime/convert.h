#pragma once

#include <QString>

#include <string>
#include <type_traits>
#include <utility>

/**
 * Converts values between the host's types and Qt's. Sources that need more conversions add
 * overloads of convert().
 */
namespace marlune {

/** Selects the overload of convert() by its result. */
template <typename Wanted>
struct To {
};

inline QString convert(const std::string& text, To<QString>)
{
    return QString::fromStdString(text);
}

inline std::string convert(const QString& text, To<std::string>)
{
    return text.toStdString();
}

/** Numbers, and enumerators as numbers. */
template <typename Number, typename Wanted>
requires std::is_arithmetic_v<Wanted> Wanted convert(Number number, To<Wanted>)
{
    return static_cast<Wanted>(number);
}

/** Passes values of the wanted type on. */
template <typename Wanted, typename Value>
std::remove_cvref_t<Wanted> converted(Value&& value)
{
    using Plain = std::remove_cvref_t<Wanted>;
    if constexpr (std::is_same_v<Plain, std::remove_cvref_t<Value>>)
        return std::forward<Value>(value);
    else
        return convert(value, To<Plain>());
}

}  // namespace marlune
