// Conversion of values between the host's plain types and Qt's.

#include "binding/conversions.h"
#include "binding/type_names.h"
#include "support/message_log.h"
#include "support/qt_loop.h"

#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace marlune::test {

using namespace marlune::db;

namespace {

using enum VariantTypeStd;

constexpr auto int_max = std::numeric_limits<int32_t>::max();
constexpr auto int_min = std::numeric_limits<int32_t>::min();

const std::vector<VariantTypeStd> vector_codes = {VECTOR2,  VECTOR2I, VECTOR3,
                                                  VECTOR3I, VECTOR4,  VECTOR4I};

/** The argument as the host receives it. The code stays unchanged. */
std::optional<ContainerStd> argument(const QVariant& value, VariantTypeStd code)
{
    const VariantTypeStd declared = code;
    auto result = from_argument(value, code);
    EXPECT_EQ(code, declared) << "the conversion has changed the code";
    return result;
}

ContainerStd single(ValueStd value)
{
    return value;
}

/** `levels` nested lists. */
QVariant nested_lists(int levels)
{
    QVariant value = QVariantList();
    for (int i = 1; i < levels; ++i)
        value = QVariantList{value};
    return value;
}

QVariant nested_maps(int levels)
{
    QVariant value = QVariantMap();
    for (int i = 1; i < levels; ++i)
        value = QVariantMap{{"a", value}};
    return value;
}

void expect_unknown_type(int id)
{
    expect_message("qvariant_to_std_container: erm, unknown type, (possibly) FIX ME: "
                   + std::to_string(id));
}

}  // namespace

// --- The types

static_assert(std::is_same_v<std::variant_alternative_t<0, ValueStd>, int32_t>);
static_assert(std::is_same_v<std::variant_alternative_t<1, ValueStd>, std::string>);
static_assert(std::is_same_v<std::variant_alternative_t<2, ValueStd>, double>);
static_assert(std::is_same_v<std::variant_alternative_t<3, ValueStd>, bool>);
static_assert(std::is_same_v<std::variant_alternative_t<4, ValueStd>, Vector2Std>);
static_assert(std::is_same_v<std::variant_alternative_t<5, ValueStd>, Vector2iStd>);
static_assert(std::is_same_v<std::variant_alternative_t<6, ValueStd>, Vector3Std>);
static_assert(std::is_same_v<std::variant_alternative_t<7, ValueStd>, Vector3iStd>);
static_assert(std::is_same_v<std::variant_alternative_t<8, ValueStd>, Vector4Std>);
static_assert(std::is_same_v<std::variant_alternative_t<9, ValueStd>, Vector4iStd>);
static_assert(std::variant_size_v<ValueStd> == 10 && std::variant_size_v<ContainerStd> == 3);
static_assert(std::is_aggregate_v<Vector2Std> && std::is_aggregate_v<Vector4iStd>);
static_assert(sizeof(VariantTypeStd) == 4);

TEST(TypeNames, are_those_that_pages_know)
{
    const std::vector<std::string> names = {
        "UNKNOWN",
        "NIL",
        "BOOL",
        "INT",
        "FLOAT",
        "STRING",
        "VECTOR2",
        "VECTOR2I",
        "RECT2",
        "RECT2I",
        "VECTOR3",
        "VECTOR3I",
        "TRANSFORM2D",
        "VECTOR4",
        "VECTOR4I",
        "PLANE",
        "QUATERNION",
        "AABB",
        "BASIS",
        "TRANSFORM3D",
        "PROJECTION",
        "COLOR",
        "STRINNAME",
        "NODE_PATH",
        "RID",
        "OBJECT",
        "CALLABLE",
        "SIGNAL",
        "DICTIONARY",
        "ARRAY",
        "PACKED_BYTE_ARRAY",
        "PACKED_INT32_ARRAY",
        "PACKED_INT64_ARRAY",
        "PACKED_FLOAT32_ARRAY",
        "PACKED_FLOAT64_ARRAY",
        "PACKED_STRING_ARRAY",
        "PACKED_VECTOR2_ARRAY",
        "PACKED_VECTOR3_ARRAY",
        "PACKED_COLOR_ARRAY",
        "PACKED_VECTOR4_ARRAY",
        "VARIANT_MAX",
    };
    ASSERT_EQ(names.size(), 41u);
    for (size_t code = 0; code < names.size(); ++code)
        EXPECT_EQ(type_name(static_cast<VariantTypeStd>(code)).toString().toStdString(),
                  names[code]);
    EXPECT_EQ(type_name(static_cast<VariantTypeStd>(22)), "STRINNAME");
}

TEST(TypeNames, are_empty_for_codes_out_of_range)
{
    for (const int code : {-1, 41, 1000, int(int_max), int(int_min)})
        EXPECT_TRUE(type_name(static_cast<VariantTypeStd>(code)).isEmpty()) << code;
}

// --- Arguments

TEST(Argument, is_converted_by_its_content_and_not_by_its_code)
{
    for (const VariantTypeStd code : {UNKNOWN, NIL, BOOL, INT, FLOAT, STRING, RECT2, COLOR}) {
        EXPECT_EQ(argument(QStringLiteral("text"), code), single("text"));
        EXPECT_EQ(argument(true, code), single(true));
        EXPECT_EQ(argument(7, code), single(7));
        EXPECT_EQ(argument(1.5, code), single(1.5));
        EXPECT_EQ(argument(qlonglong(1) << 40, code), single(1099511627776.0));
        EXPECT_EQ(argument(qulonglong(5), code), single(5.0));
    }
}

TEST(Argument, of_an_unknown_type_logs_a_warning_and_becomes_zero)
{
    expect_unknown_type(QMetaType::UnknownType);
    EXPECT_EQ(argument(QVariant(), INT), single(0));
    expect_unknown_type(QMetaType::Nullptr);
    EXPECT_EQ(argument(QVariant::fromValue(nullptr), STRING), single(0));
    expect_unknown_type(QMetaType::QByteArray);
    EXPECT_EQ(argument(QByteArray("bytes"), STRING), single(0));
    expect_unknown_type(QMetaType::Float);
    EXPECT_EQ(argument(1.5F, FLOAT), single(0));
}

TEST(Argument, text_arrives_complete_in_utf8)
{
    EXPECT_EQ(argument(QStringLiteral("größer 猫 🐈"), STRING), single("größer 猫 🐈"));
    EXPECT_EQ(argument(QString(QChar(u'\0')) + "b", STRING), single(std::string("\0b", 2)));
    EXPECT_EQ(argument(QString(), STRING), single(""));
    EXPECT_EQ(argument(QString(1 << 22, u'x'), STRING), single(std::string(1 << 22, 'x')));
}

TEST(Argument, with_half_a_character_is_accepted)
{
    const QString half = QString(u'a') + QChar(0xd83d) + u'b';
    const auto text = std::get<std::string>(std::get<ValueStd>(*argument(half, STRING)));
    EXPECT_TRUE(text == "a?b" || text == "ab") << text << ", depending on the version of Qt";
    const auto json = argument(QVariantList{half}, ARRAY);
    EXPECT_EQ(to_variant(*json, ARRAY).toList().size(), 1);
}

TEST(Argument, object_for_a_dictionary_is_compact_json)
{
    const QVariantMap map = {{"b", QVariantList{1, 2.5, "x", true, QVariant()}},
                             {"a", QVariantMap{{"ü", "\"\n"}}}};
    EXPECT_EQ(argument(map, DICTIONARY), single(R"({"a":{"ü":"\"\n"},"b":[1,2.5,"x",true,null]})"));
    EXPECT_EQ(argument(QVariantMap(), DICTIONARY), single("{}"));
    EXPECT_EQ(argument(5, DICTIONARY), single("{}"));
    EXPECT_EQ(argument(QVariant(), DICTIONARY), single("{}"));
    EXPECT_EQ(argument(QVariantList{1}, DICTIONARY), single("{}"));
}

TEST(Argument, list_for_an_array_is_compact_json)
{
    EXPECT_EQ(argument(QVariantList{1, QVariantList{2}, QVariantMap{{"a", 1}}}, ARRAY),
              single(R"([1,[2],{"a":1}])"));
    EXPECT_EQ(argument(QVariantList(), ARRAY), single("[]"));
    EXPECT_EQ(argument(5, ARRAY), single("[]"));
    EXPECT_EQ(argument(QVariantMap{{"a", 1}}, ARRAY), single("[]"));
}

TEST(Argument, that_is_a_container_changes_a_code_that_is_none)
{
    for (const VariantTypeStd declared : {UNKNOWN, NIL, INT, STRING, COLOR}) {
        VariantTypeStd code = declared;
        EXPECT_EQ(from_argument(QVariantMap{{"a", 1}}, code), single(R"({"a":1})"));
        EXPECT_EQ(code, DICTIONARY);
        code = declared;
        EXPECT_EQ(from_argument(QVariantList{1, "b"}, code), single(R"([1,"b"])"));
        EXPECT_EQ(code, ARRAY);
    }
}

TEST(Argument, vector_uses_the_first_elements_of_a_list)
{
    const QVariantList list = {1.5, 2.5, 3.5, 4.6, 5.5};
    EXPECT_EQ(argument(list, VECTOR2), single(Vector2Std{1.5, 2.5}));
    EXPECT_EQ(argument(list, VECTOR3), single(Vector3Std{1.5, 2.5, 3.5}));
    EXPECT_EQ(argument(list, VECTOR4), single(Vector4Std{1.5, 2.5, 3.5, 4.6}));
    const QVariantList integers = {1, -2, qlonglong(3), 4.0, 5};
    EXPECT_EQ(argument(integers, VECTOR2I), single(Vector2iStd{1, -2}));
    EXPECT_EQ(argument(integers, VECTOR3I), single(Vector3iStd{1, -2, 3}));
    EXPECT_EQ(argument(integers, VECTOR4I), single(Vector4iStd{1, -2, 3, 4}));
}

TEST(Argument, vector_keeps_double_precision)
{
    EXPECT_EQ(argument(QVariantList{0.1, 1e300}, VECTOR2), single(Vector2Std{0.1, 1e300}));
}

TEST(Argument, integer_vector_rounds_and_stays_in_range)
{
    const double nan = std::nan("");
    EXPECT_EQ(argument(QVariantList{2.5, -2.5, 1e300, -1e300}, VECTOR4I),
              single(Vector4iStd{3, -3, int_max, int_min}));
    EXPECT_EQ(argument(QVariantList{nan, qlonglong(1) << 40}, VECTOR2I),
              single(Vector2iStd{0, int_max}));
    EXPECT_EQ(argument(QVariantList{"12", true}, VECTOR2I), single(Vector2iStd{12, 1}));
}

TEST(Argument, vector_refuses_all_but_a_list_that_is_long_enough)
{
    for (const VariantTypeStd code : vector_codes) {
        EXPECT_FALSE(argument(5, code));
        EXPECT_FALSE(argument(QVariant(), code));
        EXPECT_FALSE(argument("1,2,3,4", code));
        EXPECT_FALSE(argument(QVariantMap{{"x", 1}, {"y", 2}}, code));
        EXPECT_FALSE(argument(QVariantList(), code));
        EXPECT_FALSE(argument(QVariantList{1}, code));
    }
    EXPECT_FALSE(argument(QVariantList{1, 2}, VECTOR3));
    EXPECT_FALSE(argument(QVariantList{1, 2}, VECTOR3I));
    EXPECT_FALSE(argument(QVariantList{1, 2, 3}, VECTOR4));
    EXPECT_FALSE(argument(QVariantList{1, 2, 3}, VECTOR4I));
}

TEST(Argument, that_is_not_finite_becomes_null_in_json)
{
    const QVariantList list = {std::nan(""), std::numeric_limits<double>::infinity(), 1};
    EXPECT_EQ(argument(list, ARRAY), single("[null,null,1]"));
    EXPECT_EQ(argument(std::numeric_limits<double>::infinity(), FLOAT),
              single(std::numeric_limits<double>::infinity()));
}

TEST(Argument, nested_as_deep_as_qt_reads_arrives)
{
    EXPECT_EQ(argument(nested_lists(1000), ARRAY),
              single(std::string(1000, '[') + std::string(1000, ']')));
}

TEST(Argument, nested_too_deeply_logs_a_warning_and_arrives_empty)
{
    for (const int levels : {1025, 10000}) {
        allow_messages_matching("is nested more than 1024 levels deep");
        VariantTypeStd code = INT;
        EXPECT_EQ(from_argument(nested_lists(levels), code), single("[]"));
        EXPECT_EQ(code, ARRAY);
        EXPECT_EQ(argument(nested_maps(levels), DICTIONARY), single("{}"));
        EXPECT_EQ(from_property_write(nested_maps(levels), DICTIONARY), single("{}"));
    }
}

TEST(Argument, from_a_scene_may_be_a_script_value)
{
    have_application();
    QJSEngine engine;
    const auto in_script = [&](const char* text) {
        return QVariant::fromValue(engine.evaluate(text));
    };
    EXPECT_EQ(argument(in_script("({a: [1, {b: 'c'}]})"), DICTIONARY),
              single(R"({"a":[1,{"b":"c"}]})"));
    EXPECT_EQ(argument(in_script("[1.5, 2.5]"), VECTOR2), single(Vector2Std{1.5, 2.5}));
    EXPECT_EQ(argument(in_script("'text'"), INT), single("text"));
}

// --- Writes of properties

TEST(PropertyWrite, is_converted_by_the_code_and_not_by_its_content)
{
    EXPECT_EQ(from_property_write(5, STRING), single("5"));
    EXPECT_EQ(from_property_write(true, STRING), single("true"));
    EXPECT_EQ(from_property_write("12", INT), single(12));
    EXPECT_EQ(from_property_write("words", INT), single(0));
    EXPECT_EQ(from_property_write(7.0, INT), single(7));
    EXPECT_EQ(from_property_write(qlonglong(7), INT), single(7));
    EXPECT_EQ(from_property_write(2.7, INT), single(3));
    EXPECT_EQ(from_property_write(1e12, INT), single(int_max));
    EXPECT_EQ(from_property_write(0, BOOL), single(false));
    EXPECT_EQ(from_property_write(1.0, BOOL), single(true));
    EXPECT_EQ(from_property_write("false", BOOL), single(false));
    EXPECT_EQ(from_property_write(qlonglong(2), FLOAT), single(2.0));
    EXPECT_EQ(from_property_write("1.5", FLOAT), single(1.5));
}

TEST(PropertyWrite, of_null_is_the_type_s_zero)
{
    const QVariant null = QVariant::fromValue(nullptr);
    EXPECT_EQ(from_property_write(null, STRING), single(""));
    EXPECT_EQ(from_property_write(null, INT), single(0));
    EXPECT_EQ(from_property_write(null, BOOL), single(false));
    EXPECT_EQ(from_property_write(null, FLOAT), single(0.0));
    EXPECT_EQ(from_property_write(null, DICTIONARY), single("{}"));
    EXPECT_EQ(from_property_write(null, ARRAY), single("[]"));
}

TEST(PropertyWrite, of_floats_goes_through_single_precision)
{
    const auto rounded = static_cast<double>(0.1F);
    ASSERT_NE(rounded, 0.1);
    EXPECT_EQ(from_property_write(0.1, FLOAT), single(rounded));
    const QVariantList list = {0.1, 0.1, 0.1, 0.1, 9};
    EXPECT_EQ(from_property_write(list, VECTOR2), single(Vector2Std{rounded, rounded}));
    EXPECT_EQ(from_property_write(list, VECTOR3), single(Vector3Std{rounded, rounded, rounded}));
    EXPECT_EQ(from_property_write(list, VECTOR4),
              single(Vector4Std{rounded, rounded, rounded, rounded}));
}

TEST(PropertyWrite, of_integer_vectors_accepts_integers)
{
    const QVariantList list = {16777217, qlonglong(-2), 3.0, 4};
    EXPECT_EQ(from_property_write(list, VECTOR2I), single(Vector2iStd{16777217, -2}));
    EXPECT_EQ(from_property_write(list, VECTOR3I), single(Vector3iStd{16777217, -2, 3}));
    EXPECT_EQ(from_property_write(list, VECTOR4I), single(Vector4iStd{16777217, -2, 3, 4}));
}

TEST(PropertyWrite, of_containers_is_compact_json)
{
    EXPECT_EQ(from_property_write(QVariantMap{{"a", QVariantList{1, 2}}}, DICTIONARY),
              single(R"({"a":[1,2]})"));
    EXPECT_EQ(from_property_write(QVariantList{QVariantMap{{"a", 1}}}, ARRAY),
              single(R"([{"a":1}])"));
}

TEST(PropertyWrite, of_a_vector_refuses_all_but_a_list_that_is_long_enough)
{
    for (const VariantTypeStd code : vector_codes) {
        EXPECT_FALSE(from_property_write(5, code));
        EXPECT_FALSE(from_property_write(QVariantList{1}, code));
    }
}

TEST(PropertyWrite, for_a_mere_label_depends_on_the_content_of_the_value)
{
    for (const VariantTypeStd code : {UNKNOWN, NIL, COLOR, RECT2}) {
        EXPECT_EQ(from_property_write("#fff", code), single("#fff"));
        EXPECT_EQ(from_property_write(0.1, code), single(0.1));
        EXPECT_EQ(from_property_write(QVariantMap{{"r", 1}}, code), single(R"({"r":1})"));
    }
    expect_unknown_type(QMetaType::UnknownType);
    EXPECT_EQ(from_property_write(QVariant(), COLOR), single(0));
}

// --- From the host

TEST(HostValue, is_converted_by_its_content)
{
    for (const VariantTypeStd code : {UNKNOWN, BOOL, INT, STRING, VECTOR2, COLOR}) {
        EXPECT_EQ(to_variant(single(7), code), QVariant(7));
        EXPECT_EQ(to_variant(single(7), code).typeId(), QMetaType::Int);
        EXPECT_EQ(to_variant(single("größer"), code), QVariant(QStringLiteral("größer")));
        EXPECT_EQ(to_variant(single(1.5), code).typeId(), QMetaType::Double);
        EXPECT_EQ(to_variant(single(true), code), QVariant(true));
        EXPECT_EQ(to_variant(single(true), code).typeId(), QMetaType::Bool);
    }
}

TEST(HostValue, vector_becomes_a_list_of_its_components)
{
    EXPECT_EQ(to_variant(single(Vector2Std{1.5, 2}), VECTOR2).toList(), (QVariantList{1.5, 2.0}));
    EXPECT_EQ(to_variant(single(Vector3Std{1, 2, 3}), VECTOR3).toList(),
              (QVariantList{1.0, 2.0, 3.0}));
    EXPECT_EQ(to_variant(single(Vector4Std{1, 2, 3, 4}), VECTOR4).toList(),
              (QVariantList{1.0, 2.0, 3.0, 4.0}));
    EXPECT_EQ(to_variant(single(Vector2iStd{1, 2}), VECTOR2I).toList(), (QVariantList{1, 2}));
    EXPECT_EQ(to_variant(single(Vector3iStd{1, 2, 3}), VECTOR3I).toList(), (QVariantList{1, 2, 3}));
    EXPECT_EQ(to_variant(single(Vector4iStd{1, 2, 3, 4}), VECTOR4I).toList(),
              (QVariantList{1, 2, 3, 4}));
    for (const QVariant& component : to_variant(single(Vector2Std{1, 2}), VECTOR2).toList())
        EXPECT_EQ(component.typeId(), QMetaType::Double);
    for (const QVariant& component : to_variant(single(Vector2iStd{1, 2}), VECTOR2I).toList())
        EXPECT_EQ(component.typeId(), QMetaType::Int);
}

TEST(HostValue, text_arrives_complete)
{
    EXPECT_EQ(to_variant(single(std::string("\0b", 2)), STRING).toString(),
              QString(QChar(0)) + "b");
    EXPECT_EQ(to_variant(single("\xff"), STRING).toString(), QString(QChar::ReplacementCharacter));
}

TEST(HostValue, nil_is_no_value_whatever_the_content)
{
    EXPECT_FALSE(to_variant(single(7), NIL).isValid());
    EXPECT_FALSE(to_variant(ContainerStd(std::vector<ValueStd>{1}), NIL).isValid());
}

TEST(HostValue, containers_are_read_from_json)
{
    EXPECT_EQ(to_variant(single("[1,2]"), ARRAY).toList(), (QVariantList{1, 2}));
    const QVariant map = to_variant(single(R"( { "a" : {"b": [1, null]} } )"), DICTIONARY);
    ASSERT_EQ(map.typeId(), QMetaType::QVariantMap);
    EXPECT_EQ(map.toMap()["a"].toMap()["b"].toList().size(), 2);
}

TEST(HostValue, text_that_is_no_json_of_the_type_is_an_empty_container)
{
    for (const char* const text : {"", "{", "[1", "5", "null", "nonsense"}) {
        const QVariant map = to_variant(single(text), DICTIONARY);
        const QVariant list = to_variant(single(text), ARRAY);
        EXPECT_EQ(map.typeId(), QMetaType::QVariantMap);
        EXPECT_TRUE(map.toMap().isEmpty()) << text;
        EXPECT_EQ(list.typeId(), QMetaType::QVariantList);
        EXPECT_TRUE(list.toList().isEmpty()) << text;
    }
    EXPECT_TRUE(to_variant(single("[1]"), DICTIONARY).toMap().isEmpty());
    EXPECT_TRUE(to_variant(single(R"({"a":1})"), ARRAY).toList().isEmpty());
    const std::string deep = std::string(100000, '[') + std::string(100000, ']');
    EXPECT_TRUE(to_variant(single(deep), ARRAY).toList().isEmpty());
}

TEST(HostValue, of_the_wrong_kind_throws)
{
    const ContainerStd map = std::map<std::string, ValueStd>{{"a", 1}};
    const ContainerStd list = std::vector<ValueStd>{1, 2};
    for (const ContainerStd& value : {map, list}) {
        for (const VariantTypeStd code : {UNKNOWN, INT, STRING, VECTOR2, DICTIONARY, ARRAY, COLOR})
            EXPECT_THROW(to_variant(value, code), std::bad_variant_access);
    }
    for (const VariantTypeStd code : {DICTIONARY, ARRAY}) {
        EXPECT_THROW(to_variant(single(7), code), std::bad_variant_access);
        EXPECT_THROW(to_variant(single(Vector2Std{}), code), std::bad_variant_access);
    }
}

TEST(HostValue, of_the_wrong_kind_logs_a_warning_where_exceptions_are_not_allowed)
{
    expect_message("the thing does not match its type ARRAY. Pass a single value, or a "
                   "container as JSON text.");
    EXPECT_FALSE(to_variant_or_warn(single(7), ARRAY, "the thing").isValid());
    EXPECT_EQ(to_variant_or_warn(single(7), INT, "the thing"), QVariant(7));
}

TEST(HostValue, containers_survive_conversion_in_both_directions)
{
    const auto sent =
        argument(to_variant(single(R"({"a":[1,2.5,"x",null,true]})"), DICTIONARY), DICTIONARY);
    EXPECT_EQ(sent, single(R"({"a":[1,2.5,"x",null,true]})"));
}

}  // namespace marlune::test
