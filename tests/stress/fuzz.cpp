// Random values, addresses and keys, for any length of time. Each run prints its seed, which
// repeats it: MARLUNE_FUZZ_SEED=... MARLUNE_FUZZ_SECONDS=... test-stress_fuzz

#include "support/fuzz.h"
#include "binding/conversions.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJSValue>
#include <QPointF>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marlune::test {

using namespace db;
using enum VariantTypeStd;

namespace {

using namespace std::chrono_literals;

// --- Values ------------------------------------------------------------------------------------

constexpr VariantTypeStd VECTORS[] = {VECTOR2, VECTOR2I, VECTOR3, VECTOR3I, VECTOR4, VECTOR4I};

/** Which alternative of ValueStd a vector's code stands for, and how many components it has. */
struct VectorKind {
    size_t alternative = 0;
    qsizetype length = 0;
};

std::optional<VectorKind> vector_kind(VariantTypeStd code)
{
    for (size_t i = 0; i < std::size(VECTORS); ++i) {
        if (VECTORS[i] == code)
            return VectorKind{4 + i, static_cast<qsizetype>(2 + i / 2)};
    }
    return std::nullopt;
}

bool is_container(VariantTypeStd code)
{
    return code == DICTIONARY || code == ARRAY;
}

bool holds(const QVariant& value, QMetaType::Type type)
{
    return value.typeId() == type;
}

class ValueFuzz : public Fuzz {
protected:
    VariantTypeStd code()
    {
        constexpr VariantTypeStd meant[] = {BOOL, INT, FLOAT, STRING, DICTIONARY, ARRAY, COLOR};
        switch (dice.below(4)) {
        case 0:
            return static_cast<VariantTypeStd>(dice.below(41));
        case 1:
            return dice.one_of(VECTORS);
        case 2:
            return dice.one_of(meant);
        default:
            // A faulty host.
            return dice.one_in(8) ? static_cast<VariantTypeStd>(dice.any()) : UNKNOWN;
        }
    }

    double number()
    {
        using Limits = std::numeric_limits<double>;
        constexpr double special[] = {0.0,
                                      -0.0,
                                      0.5,
                                      -0.5,
                                      2147483647.5,
                                      -2147483648.5,
                                      4294967296.0,
                                      9007199254740993.0,
                                      1e300,
                                      Limits::denorm_min(),
                                      Limits::max(),
                                      Limits::lowest(),
                                      Limits::infinity(),
                                      -Limits::infinity(),
                                      Limits::quiet_NaN()};
        if (dice.one_in(2))
            return dice.one_of(special);
        return std::bit_cast<double>(dice.any());
    }

    /** Any UTF-16 units, including unpaired surrogates and zeros. */
    QString text()
    {
        QString result;
        const uint64_t length = dice.one_in(16) ? dice.below(1000) : dice.below(8);
        for (uint64_t i = 0; i < length; ++i)
            result +=
                QChar(static_cast<char16_t>(dice.one_in(3) ? dice.any() : 32 + dice.below(96)));
        return result;
    }

    QVariantList list(int levels)
    {
        QVariantList result;
        for (uint64_t left = dice.below(6); left > 0; --left)
            result.append(value(levels - 1));
        return result;
    }

    QVariantMap map(int levels)
    {
        QVariantMap result;
        for (uint64_t left = dice.below(6); left > 0; --left)
            result[text()] = value(levels - 1);
        return result;
    }

    QVariant nested()
    {
        QVariant result = QVariantList();
        for (uint64_t left = dice.below(1100); left > 0; --left) {
            if (dice.one_in(2))
                result = QVariantList{result};
            else
                result = QVariantMap{{"a", result}};
        }
        return result;
    }

    QVariant value(int levels = 3)
    {
        switch (dice.below(levels > 0 ? 22 : 16)) {
        case 0:
            return {};
        case 1:
            return QVariant::fromValue(nullptr);
        case 2:
            return dice.one_in(2);
        case 3:
            return static_cast<int>(dice.any());
        case 4:
            return static_cast<uint>(dice.any());
        case 5:
            return static_cast<qlonglong>(dice.any());
        case 6:
            return static_cast<qulonglong>(dice.any());
        case 7:
        case 8:
            return number();
        case 9:
            return static_cast<float>(number());
        case 10:
        case 11:
            return text();
        case 12:
            return text().toUtf8();
        case 13:
            return dice.one_in(2) ? QVariant(QPointF(number(), number())) : QVariant(QUrl(text()));
        case 14:
            return QVariant::fromValue(dice.one_in(2) ? QJSValue(text()) : QJSValue(number()));
        case 15:
            return QDateTime::fromMSecsSinceEpoch(static_cast<qint32>(dice.any()));
        case 16:
        case 17:
            return list(levels);
        case 18:
        case 19:
            return map(levels);
        case 20:
            return QVariantHash{{text(), value(levels - 1)}};
        default:
            return dice.one_in(16) ? nested() : QVariant(QStringList{text(), text()});
        }
    }

    std::string bytes()
    {
        std::string result(dice.below(12), 0);
        for (char& byte : result)
            byte = static_cast<char>(dice.any());
        return result;
    }

    std::string text_of_host()
    {
        constexpr const char* json[] = {"{\"a\":[1,{}]}", "[1,2]",         "{", "[",  "null",
                                        "1e999",          "[\"\\ud800\"]", "",  "{}", "[]"};
        if (dice.one_in(2))
            return bytes();
        return dice.one_of(json);
    }

    ValueStd value_of_host()
    {
        const auto whole = [this] { return static_cast<int32_t>(dice.any()); };
        switch (dice.below(10)) {
        case 0:
            return whole();
        case 1:
            return number();
        case 2:
            return dice.one_in(2);
        case 3:
            return Vector2Std{number(), number()};
        case 4:
            return Vector2iStd{whole(), whole()};
        case 5:
            return Vector3Std{number(), number(), number()};
        case 6:
            return Vector3iStd{whole(), whole(), whole()};
        case 7:
            return dice.one_in(2) ? ValueStd(Vector4Std{number(), number(), number(), number()})
                                  : ValueStd(Vector4iStd{whole(), whole(), whole(), whole()});
        default:
            return text_of_host();
        }
    }

    ContainerStd container_of_host()
    {
        switch (dice.below(6)) {
        case 0:
            return std::map<std::string, ValueStd>{{text_of_host(), value_of_host()}};
        case 1:
            return std::vector<ValueStd>{value_of_host(), value_of_host()};
        default:
            return value_of_host();
        }
    }
};

/** Like ==, but a NaN equals another NaN. */
bool is_same(const ContainerStd& left, const ContainerStd& right)
{
    const auto as_bits = [](const ValueStd& value) -> ValueStd {
        const auto bits = [](double number) {
            return std::isnan(number) ? std::string("nan")
                                      : std::to_string(std::bit_cast<int64_t>(number + 0.0));
        };
        return std::visit(
            [&]<typename Type>(const Type& held) -> ValueStd {
                if constexpr (std::is_same_v<Type, double>)
                    return bits(held);
                else if constexpr (std::is_same_v<Type, Vector2Std>)
                    return bits(held.x) + ' ' + bits(held.y);
                else if constexpr (std::is_same_v<Type, Vector3Std>)
                    return bits(held.x) + ' ' + bits(held.y) + ' ' + bits(held.z);
                else if constexpr (std::is_same_v<Type, Vector4Std>)
                    return bits(held.x) + ' ' + bits(held.y) + ' ' + bits(held.z) + ' '
                        + bits(held.w);
                else
                    return held;
            },
            value);
    };
    const auto &a = std::get<ValueStd>(left), &b = std::get<ValueStd>(right);
    return a.index() == b.index() && as_bits(a) == as_bits(b);
}

/** JSON without a blank, of an object or an array as the code says. */
testing::AssertionResult is_json_of(VariantTypeStd code, const ContainerStd& value)
{
    const auto* const text = std::get_if<std::string>(&std::get<ValueStd>(value));
    if (!text)
        return testing::AssertionFailure() << "the value is not a text";
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(*text));
    const bool is_right = code == DICTIONARY ? document.isObject() : document.isArray();
    return testing::AssertionResult(is_right) << *text;
}

/** The alternative for what is neither a vector nor a container; nothing for an unknown type. */
std::optional<size_t> alternative_of(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
        return 0;
    case QMetaType::QString:
        return 1;
    case QMetaType::Double:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return 2;
    case QMetaType::Bool:
        return 3;
    default:
        return std::nullopt;
    }
}

/** What becomes of a code by a value that is given for it. */
VariantTypeStd code_after(const QVariant& value, VariantTypeStd code)
{
    if (is_container(code) || vector_kind(code))
        return code;
    if (holds(value, QMetaType::QVariantMap))
        return DICTIONARY;
    return holds(value, QMetaType::QVariantList) ? ARRAY : code;
}

bool fits_vector(const QVariant& value, const VectorKind& vector)
{
    return holds(value, QMetaType::QVariantList) && value.toList().size() >= vector.length;
}

void check_argument(const QVariant& value, VariantTypeStd declared)
{
    VariantTypeStd code = declared;
    const auto result = from_argument(value, code);
    const int messages = MessageCounter::take();
    const QVariant plain = without_script_value(value);

    EXPECT_EQ(code, code_after(plain, declared));
    if (const auto vector = vector_kind(declared)) {
        ASSERT_EQ(result.has_value(), fits_vector(plain, *vector));
        if (result) {
            EXPECT_EQ(std::get<ValueStd>(*result).index(), vector->alternative);
        }
        return;
    }
    ASSERT_TRUE(result) << "a value other than a vector was refused";
    if (is_container(code)) {
        EXPECT_TRUE(is_json_of(code, *result));
        EXPECT_LE(messages, 1) << "more than the one message about nesting";
        return;
    }
    const auto alternative = alternative_of(plain);
    EXPECT_EQ(std::get<ValueStd>(*result).index(), alternative.value_or(0));
    EXPECT_EQ(messages, alternative ? 0 : 1);
    if (!alternative) {
        EXPECT_EQ(*result, ContainerStd(ValueStd(0)));
    }
}

/** A value that was converted once is unchanged by a second conversion. */
void check_that_arguments_settle(const QVariant& value, VariantTypeStd code)
{
    auto first = from_argument(value, code);
    if (!first || code == NIL)
        return;
    // Now no text has unpaired surrogates, two of which could have become the same key.
    const auto second = from_argument(to_variant(*first, code), code);
    ASSERT_TRUE(second);
    const VariantTypeStd before = code;
    const auto third = from_argument(to_variant(*second, code), code);
    ASSERT_TRUE(third);
    EXPECT_EQ(code, before);
    EXPECT_TRUE(is_same(*second, *third));
}

/** The alternative that a property of the code has; nothing where it depends on the value. */
std::optional<size_t> alternative_of_property(VariantTypeStd code)
{
    switch (code) {
    case INT:
        return 0;
    case STRING:
    case DICTIONARY:
    case ARRAY:
        return 1;
    case FLOAT:
        return 2;
    case BOOL:
        return 3;
    default:
        break;
    }
    const auto vector = vector_kind(code);
    return vector ? std::optional(vector->alternative) : std::nullopt;
}

void check_property_write(const QVariant& value, VariantTypeStd code)
{
    const auto stored = from_property_write(value, code);
    const auto vector = vector_kind(code);
    ASSERT_EQ(stored.has_value(), !vector || fits_vector(without_script_value(value), *vector));
    if (!stored)
        return;
    if (const auto alternative = alternative_of_property(code)) {
        EXPECT_EQ(std::get<ValueStd>(*stored).index(), *alternative);
    }
    if (code == NIL)
        return;
    const QVariant read = to_variant(*stored, code);
    EXPECT_TRUE(read.isValid()) << "a stored value cannot be read";
    const auto settled = from_property_write(read, code);
    ASSERT_TRUE(settled);
    const auto again = from_property_write(to_variant(*settled, code), code);
    ASSERT_TRUE(again);
    EXPECT_TRUE(is_same(*settled, *again));
}

int type_of(const ValueStd& value)
{
    constexpr int types[] = {QMetaType::Int, QMetaType::QString, QMetaType::Double,
                             QMetaType::Bool};
    return value.index() < std::size(types) ? types[value.index()] : QMetaType::QVariantList;
}

void check_value_of_host(const ContainerStd& value, VariantTypeStd code)
{
    const auto* const single = std::get_if<ValueStd>(&value);
    const bool fits = code == NIL
        || (single && (!is_container(code) || std::holds_alternative<std::string>(*single)));
    QVariant result;
    bool has_thrown = false;
    try {
        result = to_variant(value, code);
    } catch (const std::bad_variant_access&) {
        has_thrown = true;
    }
    EXPECT_EQ(has_thrown, !fits);

    MessageCounter::take();
    EXPECT_EQ(to_variant_or_warn(value, code, "it").isValid(), fits && code != NIL);
    EXPECT_EQ(MessageCounter::take(), fits ? 0 : 1);
    if (!fits || code == NIL)
        return;
    if (code == DICTIONARY) {
        EXPECT_EQ(result.typeId(), QMetaType::QVariantMap);
    } else if (code == ARRAY) {
        EXPECT_EQ(result.typeId(), QMetaType::QVariantList);
    } else {
        EXPECT_EQ(result.typeId(), type_of(*single));
    }
}

TEST_F(ValueFuzz, of_arguments)
{
    const MessageCounter counter;
    repeat([&] {
        const QVariant argument = value();
        const VariantTypeStd declared = code();
        check_argument(argument, declared);
        check_that_arguments_settle(argument, declared);
        MessageCounter::take();
    });
}

TEST_F(ValueFuzz, of_written_properties)
{
    const MessageCounter counter;
    repeat([&] { check_property_write(value(), code()); });
}

TEST_F(ValueFuzz, of_the_host)
{
    const MessageCounter counter;
    repeat([&] { check_value_of_host(container_of_host(), code()); });
}

// --- Addresses ---------------------------------------------------------------------------------

constexpr auto VISITOR = R"(<!doctype html><title>visitor</title><script>
// Of each address: its path as a browser has it, and the length and the sum of what is there.
async function visit(urls) {
    const results = [];
    for (const url of urls) {
        const path = new URL(url, location).pathname;
        const reply = await fetch(url);
        const bytes = reply.ok ? new Uint8Array(await reply.arrayBuffer()) : [];
        results.push([path, bytes.length, bytes.reduce((sum, byte) => (sum * 31 + byte) % 65521, 0)]);
    }
    return results;
}
</script>)";

bool is_hex(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/**
 * Without percent signs, unless one of them stands alone: then all of them are taken as they are.
 */
std::string decoded(const std::string& path)
{
    std::string result;
    for (size_t i = 0; i < path.size(); ++i) {
        if (path[i] != '%') {
            result += path[i];
            continue;
        }
        if (i + 2 >= path.size() || !is_hex(path[i + 1]) || !is_hex(path[i + 2]))
            return path;
        result += static_cast<char>(std::stoi(path.substr(i + 1, 2), nullptr, 16));
        i += 2;
    }
    return QString::fromStdString(result)
        .toStdString();  // with a sign in place of what is no UTF-8
}

std::string file_for(const std::string& path)
{
    return path.ends_with('/') ? path + "index.html" : path;
}

/** A file of random content, but for each path always the same; for some paths none. */
std::string content_of(const std::string& path)
{
    Dice dice(std::hash<std::string>()(path));
    std::string content(dice.one_in(4) ? 0 : 1 + dice.below(70'000), 0);
    const auto start = dice.any();
    for (size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<char>(start + i * i / 7);
    return content;
}

int64_t sum_of(const std::string& content)
{
    int64_t sum = 0;
    for (const char c : content)
        sum = (sum * 31 + static_cast<unsigned char>(c)) % 65521;
    return sum;
}

/** The host's files: nearly every path has one. */
class EndlessPack {
public:
    std::vector<std::string> take_asked_for()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(asked_for_, {});
    }

private:
    std::mutex mutex_;
    std::string content_;
    std::vector<std::string> asked_for_;
    ServingResources serving_{[this](std::string path, bool&, uint64_t& size) {
        const std::lock_guard lock(mutex_);
        content_ = path == "/visitor.html" ? VISITOR : content_of(path);
        asked_for_.push_back(std::move(path));
        size = content_.size();
        return reinterpret_cast<uint8_t*>(content_.data());
    }};
};

class AddressFuzz : public Fuzz {
protected:
    std::string piece()
    {
        static const std::string pieces[] = {
            "a",      "b.txt",  "..",    ".",      "/",          "/",  "/",   "//",  "%2e",
            "%2E%2e", "%2f",    "%00",   "%5c",    "\\",         " ",  "%20", "+",   "ü",
            "%C3%BC", "🌊",      "%ff",   "%e2%82", "%",          "%4", "%zz", "%25", "?",
            "#",      "?a=b/c", "'",     "\"",     "<",          "{",  "|",   "^",   "`",
            ";",      ":",      "@",     "&",      "~",          "\t", "\n",  "\r",  "\x01",
            "\x7f",   ".html",  ".HTML", ".png",   "index.html", "%0a"};
        if (dice.one_in(64))  // all paths of a visit together fit into a console message
            return std::string(dice.below(2'000), 'x');
        return dice.one_of(pieces);
    }

    QString address()
    {
        std::string result = "res://pack/";
        for (uint64_t left = dice.below(8); left > 0; --left)
            result += piece();
        return QString::fromStdString(result);
    }
};

TEST_F(AddressFuzz, of_resources)
{
    EndlessPack pack;
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/visitor.html"));
    pack.take_asked_for();
    repeat([&] {
        QJsonArray addresses;
        for (int i = 0; i < 20; ++i)
            addresses.append(address());
        const auto urls = QJsonDocument(addresses).toJson(QJsonDocument::Compact);
        const std::string answer = view.evaluate("visit(" + urls.toStdString() + ")");
        const QJsonArray results =
            QJsonDocument::fromJson(QByteArray::fromStdString(answer)).array();
        const std::vector<std::string> asked_for = pack.take_asked_for();
        ASSERT_EQ(results.size(), addresses.size()) << urls.toStdString() << answer;
        ASSERT_EQ(asked_for.size(), size_t(addresses.size())) << urls.toStdString();
        for (qsizetype i = 0; i < results.size(); ++i) {
            const std::string url = addresses[i].toString().toStdString();
            const std::string path = file_for(decoded(results[i][0].toString().toStdString()));
            EXPECT_EQ(asked_for[size_t(i)], path) << url;
            const std::string content = content_of(path);
            EXPECT_EQ(results[i][1].toInteger(), int64_t(content.size())) << url;
            EXPECT_EQ(results[i][2].toInteger(), sum_of(content)) << url;
        }
    });
}

// --- Keys --------------------------------------------------------------------------------------

class KeyFuzz : public Fuzz {
protected:
    uint32_t key()
    {
        switch (dice.below(8)) {
        case 0:
            return static_cast<uint32_t>(dice.any());
        case 1:
        case 2:
        case 3:
            return static_cast<uint32_t>(0x01000000
                                         + dice.below(0x60));  // Escape to the function keys
        default:
            return static_cast<uint32_t>(0x20 + dice.below(0xe0));
        }
    }

    uint16_t action()
    {
        return static_cast<uint16_t>(dice.one_in(32) ? dice.any() : dice.below(2));
    }

    std::string text()
    {
        static const std::string prefixes[] = {"",     "",      "",  "Ctrl+", "Shift+",
                                               "Alt+", "Meta+", "+", "Ctrl",  "Ctrl+Shift+"};
        static const std::string texts[] = {"",
                                            "a",
                                            "Z",
                                            "ä",
                                            "🌊",
                                            "e\u0301",
                                            "مرحبا",
                                            "\t",
                                            "\r",
                                            "\n",
                                            "\x1b",
                                            "\x7f",
                                            "\xff\xfe\x80",
                                            "\xed\xa0\x80",
                                            "\xf0\x9f",
                                            std::string("\0", 1),
                                            "\u202e",
                                            "\ufeff"};
        std::string result = dice.one_of(prefixes);
        if (dice.one_in(16)) {
            for (uint64_t left = dice.below(12); left > 0; --left)
                result += static_cast<char>(dice.any());
            return result;
        }
        if (dice.one_in(64))
            return result + std::string(10'000, 'x');
        return result + dice.one_of(texts);
    }
};

constexpr auto FIELD =
    R"(<!doctype html><title>field</title><textarea id=field autofocus></textarea>
<input id=line><select><option>one<option>two</select><a href="#here">link</a><button>button</button>
)";

/**
 * Gets out of whatever is open or held, and types; false while keys of before still have their
 * effect.
 */
bool can_type(HostWebView& view)
{
    view.type(KEY_ESCAPE);
    if (view.evaluate("field.value = '', field.focus(), document.hasFocus()") != "true")
        return false;
    view.type_text("Probe 1");
    return view.draw_until([&] { return view.evaluate("field.value") == "\"Probe 1\""; }, 500ms);
}

TEST_F(KeyFuzz, in_a_page_with_fields)
{
    const ResourcePack pack({{"/index.html", FIELD}});
    HostWebView view;
    ASSERT_TRUE(view.open("res://pack/"));
    repeat([&] {
        for (int i = 0; i < 100; ++i)
            view->key_event(key(), action(), text());
        ASSERT_TRUE(wait_until([&] { return can_type(view); }, 20s))
            << "see " << keep_picture(view.picture());
        ASSERT_EQ(view.evaluate("[location.pathname, document.title]"), R"(["/","field"])");
    });
}

}  // namespace

}  // namespace marlune::test
