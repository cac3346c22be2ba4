#include "binding/conversions.h"

#include "binding/page_warnings.h"
#include "binding/type_names.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJSValue>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace marlune::db {

namespace {

/**
 * Qt does not read JSON text that is nested deeper, and its conversions and its writer are
 * recursive.
 */
constexpr int deepest_nesting = 1024;

bool holds_map(const QVariant& value)
{
    return value.typeId() == QMetaType::QVariantMap;
}

bool holds_list(const QVariant& value)
{
    return value.typeId() == QMetaType::QVariantList;
}

// --- Containers

bool is_container(const QVariant& value)
{
    return holds_map(value) || holds_list(value) || value.typeId() == QMetaType::QVariantHash;
}

/**
 * Whether `holds` is true for the value or for a value inside it. It also gets the depth, from 1.
 */
template <typename Predicate>
bool any_in(const QVariant& value, Predicate holds)
{
    std::vector<std::pair<QVariant, int>> containers;
    const auto visit = [&](const QVariant& element, int depth) {
        if (is_container(element))
            containers.emplace_back(element, depth);
        return holds(element, depth);
    };
    if (visit(value, 1))
        return true;
    while (!containers.empty()) {
        const auto [container, depth] = std::move(containers.back());
        containers.pop_back();
        const auto visit_below = [&visit, below = depth + 1](const QVariant& element) {
            return visit(element, below);
        };
        const auto* const map = get_if<QVariantMap>(&container);
        const auto* const list = get_if<QVariantList>(&container);
        const auto* const hash = get_if<QVariantHash>(&container);
        if ((map && std::ranges::any_of(*map, visit_below))
            || (list && std::ranges::any_of(*list, visit_below))
            || (hash && std::ranges::any_of(*hash, visit_below)))
            return true;
    }
    return false;
}

bool is_nested_too_deeply(const QVariant& value)
{
    return any_in(value, [](const QVariant& element, int depth) {
        return depth > deepest_nesting && is_container(element);
    });
}

bool is_of_plain_type(const QVariant& value)
{
    const QMetaType type = value.metaType();
    constexpr QMetaType::TypeFlags references =
        QMetaType::IsPointer | QMetaType::PointerToQObject | QMetaType::PointerToGadget;
    return type.id() < QMetaType::User && !(type.flags() & references)
        && type.id() != QMetaType::VoidStar && type.id() != QMetaType::QModelIndex
        && type.id() != QMetaType::QPersistentModelIndex;
}

// --- JSON text

ContainerStd json_text(const QJsonDocument& document)
{
    return ValueStd(document.toJson(QJsonDocument::Compact).toStdString());
}

void warn_of_nesting()
{
    warn(QStringLiteral(
             "a container is nested more than %1 levels deep and is replaced by an empty one. "
             "Send a flatter one.")
             .arg(deepest_nesting));
}

ContainerStd object_text(const QVariant& value)
{
    if (is_nested_too_deeply(value)) {
        warn_of_nesting();
        return json_text(QJsonDocument(QJsonObject()));
    }
    return json_text(QJsonDocument(QJsonObject::fromVariantMap(value.toMap())));
}

ContainerStd array_text(const QVariant& value)
{
    if (is_nested_too_deeply(value)) {
        warn_of_nesting();
        return json_text(QJsonDocument(QJsonArray()));
    }
    return json_text(QJsonDocument(QJsonArray::fromVariantList(value.toList())));
}

QJsonDocument parsed(const ContainerStd& value)
{
    const auto& text = std::get<std::string>(std::get<ValueStd>(value));
    return QJsonDocument::fromJson(
        QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
}

// --- Numbers

/** Rounds like Qt, but clamps a number that is out of range to the nearest integer. */
int32_t to_int(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::UInt:
        break;
    default:
        return value.toInt();
    }
    using Limits = std::numeric_limits<int32_t>;
    const double number = std::round(value.toDouble());
    if (std::isnan(number))
        return 0;
    return static_cast<int32_t>(
        std::clamp(number, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

double to_double(const QVariant& value)
{
    return value.toDouble();
}

/** The engine's floats are single precision, so this is the value that the game would read back. */
double to_single(const QVariant& value)
{
    return static_cast<double>(value.toFloat());
}

// --- Vectors

using Reader = double (*)(const QVariant&);

bool is_vector(VariantTypeStd code)
{
    switch (code) {
    case VariantTypeStd::VECTOR2:
    case VariantTypeStd::VECTOR2I:
    case VariantTypeStd::VECTOR3:
    case VariantTypeStd::VECTOR3I:
    case VariantTypeStd::VECTOR4:
    case VariantTypeStd::VECTOR4I:
        return true;
    default:
        return false;
    }
}

template <typename Vector, typename Read>
std::optional<ContainerStd> read_vector(const QVariantList& list, Read read)
{
    constexpr auto length = static_cast<qsizetype>(sizeof(Vector) / sizeof(Vector::x));
    if (list.size() < length)
        return std::nullopt;
    Vector vector;
    vector.x = read(list[0]);
    vector.y = read(list[1]);
    if constexpr (length > 2)
        vector.z = read(list[2]);
    if constexpr (length > 3)
        vector.w = read(list[3]);
    return ValueStd(vector);
}

std::optional<ContainerStd> to_vector(const QVariant& value, VariantTypeStd code, Reader read_float)
{
    if (!holds_list(value))
        return std::nullopt;
    const QVariantList list = value.toList();
    switch (code) {
    case VariantTypeStd::VECTOR2:
        return read_vector<Vector2Std>(list, read_float);
    case VariantTypeStd::VECTOR2I:
        return read_vector<Vector2iStd>(list, to_int);
    case VariantTypeStd::VECTOR3:
        return read_vector<Vector3Std>(list, read_float);
    case VariantTypeStd::VECTOR3I:
        return read_vector<Vector3iStd>(list, to_int);
    case VariantTypeStd::VECTOR4:
        return read_vector<Vector4Std>(list, read_float);
    default:
        return read_vector<Vector4iStd>(list, to_int);
    }
}

// --- Single values, by their type

ValueStd to_value(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString().toStdString();
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::Double:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return value.toDouble();
    default:
        warn("qvariant_to_std_container: erm, unknown type, (possibly) FIX ME: "
             + QString::number(value.typeId()));
        return 0;
    }
}

struct ValueToVariant {
    QVariant operator()(int32_t value) const { return value; }
    QVariant operator()(const std::string& value) const { return QString::fromStdString(value); }
    QVariant operator()(double value) const { return value; }
    QVariant operator()(bool value) const { return value; }

    template <typename Vector>
    QVariant operator()(const Vector& vector) const
    {
        QVariantList list = {vector.x, vector.y};
        if constexpr (requires { vector.z; })
            list.append(vector.z);
        if constexpr (requires { vector.w; })
            list.append(vector.w);
        return list;
    }
};

}  // namespace

QVariant without_script_value(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QJSValue>())
        return value;
    return value.value<QJSValue>().toVariant();
}

bool is_plain(const QVariant& value)
{
    return !any_in(value, [](const QVariant& element, int depth) {
        return depth > deepest_nesting || !is_of_plain_type(element);
    });
}

std::optional<ContainerStd> from_argument(const QVariant& value, VariantTypeStd& code)
{
    const QVariant plain = without_script_value(value);
    if (is_vector(code))
        return to_vector(plain, code, to_double);

    if (code != VariantTypeStd::DICTIONARY && code != VariantTypeStd::ARRAY) {
        if (holds_map(plain))
            code = VariantTypeStd::DICTIONARY;
        else if (holds_list(plain))
            code = VariantTypeStd::ARRAY;
    }
    if (code == VariantTypeStd::DICTIONARY)
        return object_text(plain);
    if (code == VariantTypeStd::ARRAY)
        return array_text(plain);
    return to_value(plain);
}

std::optional<ContainerStd> from_property_write(const QVariant& value, VariantTypeStd code)
{
    const QVariant plain = without_script_value(value);
    switch (code) {
    case VariantTypeStd::STRING:
        return ValueStd(plain.toString().toStdString());
    case VariantTypeStd::INT:
        return ValueStd(to_int(plain));
    case VariantTypeStd::BOOL:
        return ValueStd(plain.toBool());
    case VariantTypeStd::FLOAT:
        return ValueStd(to_single(plain));
    default:
        break;
    }
    if (is_vector(code))
        return to_vector(plain, code, to_single);
    // DICTIONARY, ARRAY and the codes that are only labels: the type of the value determines the
    // conversion. The property always keeps its code.
    return from_argument(plain, code);
}

QVariant to_variant(const ValueStd& value)
{
    return std::visit(ValueToVariant(), value);
}

QVariant to_variant(const ContainerStd& value, VariantTypeStd code)
{
    switch (code) {
    case VariantTypeStd::NIL:
        return {};
    case VariantTypeStd::DICTIONARY:
        return parsed(value).object().toVariantMap();
    case VariantTypeStd::ARRAY:
        return parsed(value).array().toVariantList();
    default:
        // Also UNKNOWN: a map or a vector would have to be JSON text, which is not possible here.
        return to_variant(std::get<ValueStd>(value));
    }
}

QVariant to_variant_or_warn(const ContainerStd& value, VariantTypeStd code, const QString& whose)
{
    try {
        return to_variant(value, code);
    } catch (const std::bad_variant_access&) {
        warn(whose + " does not match its type " + type_name(code)
             + ". Pass a single value, or a container as JSON text.");
        return {};
    }
}

}  // namespace marlune::db
