#pragma once

#include "marlune/values.h"

#include <QString>
#include <QVariant>

#include <optional>

/** Conversions of values between the host's plain types and Qt's. */
namespace marlune::db {

/**
 * QML passes script objects and arrays unconverted; this function converts them to maps and lists.
 */
QVariant without_script_value(const QVariant& value);

/** Whether the value is plain data: nothing in it refers to an object. */
bool is_plain(const QVariant& value);

/**
 * Converts an argument of a host method. Except for vectors and containers, the type of the value
 * determines the conversion. If the value is an object or a list and the code is not a container's,
 * it is converted to JSON text and `code` becomes DICTIONARY or ARRAY. Returns nothing if the code
 * is a vector's and the value is not a list of sufficient length.
 */
std::optional<ContainerStd> from_argument(const QVariant& value, VariantTypeStd& code);

/**
 * Converts a value that a page writes to a property, by the property's code. Returns nothing in the
 * same cases.
 */
std::optional<ContainerStd> from_property_write(const QVariant& value, VariantTypeStd code);

/** Converts a value by its type. */
QVariant to_variant(const ValueStd& value);

/**
 * Converts a value by its code. Throws std::bad_variant_access if it is not a single value, or not
 * a text although the code is a container's.
 */
QVariant to_variant(const ContainerStd& value, VariantTypeStd code);

/**
 * Like to_variant(), for callers that must not be unwound: logs a warning that names `whose`, and
 * returns an invalid variant.
 */
QVariant to_variant_or_warn(const ContainerStd& value, VariantTypeStd code, const QString& whose);

}  // namespace marlune::db
