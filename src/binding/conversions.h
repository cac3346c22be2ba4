#pragma once

#include "marlune/values.h"

#include <QString>
#include <QVariant>

#include <optional>

/** Values on their way between the host's plain types and Qt's. */
namespace marlune::db {

/** QML hands script objects and arrays over as they are; this gives them as maps and lists. */
QVariant without_script_value(const QVariant& value);

/** True for what stays as it is whatever becomes of others: nothing in it refers to an object. */
bool is_plain(const QVariant& value);

/**
 * An argument of a method of the host. Beyond vectors and containers it is converted by what it holds.
 * An object or a list for a code that is neither is sent as JSON text, and `code` becomes DICTIONARY or
 * ARRAY. Nothing when the code is a vector's and the value is not a list that is long enough.
 */
std::optional<ContainerStd> from_argument(const QVariant& value, VariantTypeStd& code);

/** A value that a page gives a property, converted by the property's code. Nothing as above. */
std::optional<ContainerStd> from_property_write(const QVariant& value, VariantTypeStd code);

/** By what it holds. */
QVariant to_variant(const ValueStd& value);

/**
 * By its code. Throws std::bad_variant_access when the value is not one value, or not JSON text where the
 * code is a container's.
 */
QVariant to_variant(const ContainerStd& value, VariantTypeStd code);

/** The same for callers that must not be unwound: a warning that names `whose`, and an invalid variant. */
QVariant to_variant_or_warn(const ContainerStd& value, VariantTypeStd code, const QString& whose);

}  // namespace marlune::db
