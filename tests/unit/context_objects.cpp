// Published objects as pages and QML see them, and how they serve the requests of pages and of the
// host.

#include "binding/backlog.h"
#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/method_info.h"
#include "binding/property_info.h"
#include "support/message_log.h"
#include "support/qt_loop.h"
#include "support/web/host_object.h"

#include <QMetaMethod>
#include <QMetaProperty>
#include <QWebChannel>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace marlune::test {

using namespace marlune::db;

namespace {

using enum VariantTypeStd;

constexpr auto vector_error =
    "method call error: expecting a Vector (a list) as argument with the correct lenght of parameters";

ContainerStd single(ValueStd value)
{
    return value;
}

QVariant call(DBAbstractContextObject& object, const char* method, const QVariantList& arguments)
{
    return object.___invoke_method(method, arguments);
}

/** A report of the manager to pages. */
struct Report {
    QString object, member;
    QVariant value;

    bool operator==(const Report&) const = default;
};

void PrintTo(const Report& told, std::ostream* out)
{
    QString text;
    QDebug(&text) << told.object << told.member << told.value;
    *out << text.toStdString();
}

class ContextObject : public testing::Test {
protected:
    ContextObject()
    {
        have_application();
        make_manager();
    }

    void make_manager()
    {
        manager = std::make_unique<DataBindingContextManager>(&channel, nullptr);
        QObject::connect(manager.get(), &DataBindingContextManager::propChanged,
                         [this](auto object, auto variable, auto value) {
                             changes.push_back({object, variable, value});
                         });
        QObject::connect(manager.get(), &DataBindingContextManager::gdscriptSignalEmitted,
                         [this](auto object, auto signal, auto values) {
                             emissions.push_back({object, signal, values});
                         });
    }

    /** Publishes the player and returns the object that represents it. */
    DBAbstractContextObject& publish()
    {
        EXPECT_TRUE(manager->registerObject("player", &player.record()));
        return published("player");
    }

    DBAbstractContextObject& published(const char* name)
    {
        return *qobject_cast<DBAbstractContextObject*>(channel.registeredObjects().value(name));
    }

    DBMethodInfo& published_method(const char* name)
    {
        return *qobject_cast<DBMethodInfo*>(channel.registeredObjects().value(name));
    }

    DBPropertyInfo& published_property(const char* name)
    {
        return *qobject_cast<DBPropertyInfo*>(channel.registeredObjects().value(name));
    }

    /** A method that records its arguments and returns `result`. */
    MethodInfoStd& noting_method(const std::string& name, HostObject::Arguments arguments,
                                 std::optional<VariantTypeStd> code = {}, ContainerStd result = {})
    {
        return player.method(
            name, std::move(arguments),
            [this, result](MethodInfoStd*, std::vector<ContainerStd> values,
                           std::vector<VariantTypeStd> codes) {
                ++calls;
                given_values = std::move(values);
                given_codes = std::move(codes);
                return result;
            },
            code);
    }

    HostObject player{"player"};
    QWebChannel channel;
    std::unique_ptr<DataBindingContextManager> manager;
    std::vector<Report> changes, emissions;
    int calls = 0;
    std::vector<ContainerStd> given_values;
    std::vector<VariantTypeStd> given_codes;
};

}  // namespace

// --- What pages and QML see

TEST_F(ContextObject, describes_its_methods_and_signals_by_name)
{
    player.method("f", {{INT, "a"}, {STRING, "b"}}, {}, ARRAY);
    player.method("g");
    player.signal("died", {{DICTIONARY, "why"}});
    const QVariantMap expected = {
        {"f",
         QVariantMap{{"name", "f"},
                     {"args",
                      QVariantMap{{"a", QVariantMap{{"name", "a"}, {"type", 3}}},
                                  {"b", QVariantMap{{"name", "b"}, {"type", 5}}}}},
                     {"is_method", true},
                     {"is_signal", false},
                     {"return_type", 29}}},
        {"g",
         QVariantMap{{"name", "g"},
                     {"args", QVariantMap{}},
                     {"is_method", true},
                     {"is_signal", false},
                     {"return_type", 1}}},
        {"died",
         QVariantMap{{"name", "died"},
                     {"args", QVariantMap{{"why", QVariantMap{{"name", "why"}, {"type", 28}}}}},
                     {"is_method", true},
                     {"is_signal", true},
                     {"return_type", 1}}},
    };
    EXPECT_EQ(publish().property("methodsMap").toMap(), expected);
}

TEST_F(ContextObject, describes_its_properties_by_name)
{
    player.property("health", INT, single(100));
    player.property("bag", ARRAY, single("[1,2]"));
    player.property("nothing", NIL, single(7));
    const QVariantMap expected = {
        {"health", QVariantMap{{"value", 100}, {"type", 3}, {"is_method", false}}},
        {"bag", QVariantMap{{"value", QVariantList{1, 2}}, {"type", 29}, {"is_method", false}}},
        {"nothing", QVariantMap{{"value", QVariant()}, {"type", 1}, {"is_method", false}}},
    };
    EXPECT_EQ(publish().property("variablesMap").toMap(), expected);
}

TEST_F(ContextObject, describes_the_current_values_of_the_host)
{
    PropertyInfoStd& health = player.property("health", INT, single(100));
    DBAbstractContextObject& object = publish();
    health.value = ValueStd(50);
    EXPECT_EQ(object.variables_map()["health"].toMap()["value"], QVariant(50));
    EXPECT_EQ(published_property("player.health").value(), QVariant(50));
}

TEST_F(ContextObject, has_its_record_s_name_and_is_marked_as_an_object)
{
    HostObject other("inner name");
    ASSERT_TRUE(manager->registerObject("outer name", &other.record()));
    EXPECT_EQ(published("outer name").property("name"), QVariant("inner name"));
    EXPECT_TRUE(published("outer name").property("isContextObject").isValid());
}

TEST_F(ContextObject, lists_a_method_s_arguments_in_order_in_its_own_description)
{
    player.method("f", {{STRING, "z"}, {INT, "a"}}, {}, FLOAT);
    publish();
    DBMethodInfo& method = published_method("player.f");
    EXPECT_EQ(method.property("name"), QVariant("f"));
    const QVariantMap description = method.property("description").toMap();
    EXPECT_EQ(description["name"], QVariant("f"));
    EXPECT_EQ(description["is_signal"], QVariant(false));
    EXPECT_EQ(description["return_type"], QVariant(4));
    ASSERT_EQ(description["args"].typeId(), QMetaType::QVariantList);
    const QVariantList arguments = description["args"].toList();
    ASSERT_EQ(arguments.size(), 2);
    EXPECT_EQ(arguments[0].toMap()["type"], QVariant(5));
    EXPECT_EQ(arguments[1].toMap()["type"], QVariant(3));
}

TEST_F(ContextObject, describes_a_property_by_name_and_type)
{
    player.property("health", INT, single(100));
    publish();
    DBPropertyInfo& property = published_property("player.health");
    EXPECT_EQ(property.property("description").toMap(),
              (QVariantMap{{"name", "health"}, {"type", 3}}));
    EXPECT_EQ(property.property("name"), QVariant("health"));
}

TEST_F(ContextObject, notifies_of_a_property_s_texts_only_when_they_change)
{
    player.property("health", INT, single(100));
    publish();
    DBPropertyInfo& property = published_property("player.health");
    int signals_seen = 0;
    QObject::connect(&property, &DBPropertyInfo::NOPSignal, [&] { ++signals_seen; });
    for (const char* const name : {"name", "class_name", "hint_string"}) {
        signals_seen = 0;
        EXPECT_TRUE(property.setProperty(name, "something"));
        EXPECT_EQ(property.property(name), QVariant("something"));
        EXPECT_TRUE(property.setProperty(name, "something"));
        EXPECT_EQ(signals_seen, 1) << name;
    }
}

TEST_F(ContextObject, writes_signatures)
{
    player.method("f", {{INT, "a"}, {STRING, "b"}});
    player.method("g");
    player.method("h", {{STRINGNAME, "n"}, {static_cast<VariantTypeStd>(99), "x"}});
    DBAbstractContextObject& object = publish();
    EXPECT_EQ(object.get_method_signature(QString("f")), QVariant("f(a: INT,b: STRING)"));
    EXPECT_EQ(object.get_method_signature(QString("g")), QVariant("g()"));
    EXPECT_EQ(object.get_method_signature(QString("h")), QVariant("h(n: STRINNAME,x: )"));
    EXPECT_FALSE(object.get_method_signature(QString("unknown")).isValid());
}

TEST_F(ContextObject, leaves_out_members_without_a_record)
{
    player.record().methods["f"] = nullptr;
    player.record().properties["p"] = nullptr;
    expect_message("method player.f is ignored because its record is null");
    expect_message("property player.p is ignored because its record is null");
    DBAbstractContextObject& object = publish();
    EXPECT_TRUE(object.methods_map().isEmpty());
    EXPECT_TRUE(object.variables_map().isEmpty());
}

TEST_F(ContextObject, with_a_method_and_a_property_of_one_name_gives_pages_both)
{
    noting_method("both", {});
    player.property("both", INT, single(7));
    DBAbstractContextObject& object = publish();
    EXPECT_EQ(published_property("player.both").value(), QVariant(7));
    call(object, "both", {});
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(channel.registeredObjects().isEmpty());
}

// --- Calls

TEST_F(ContextObject, calls_the_host_at_once_on_the_same_thread_and_returns_its_result)
{
    MethodInfoStd* given_record = nullptr;
    std::thread::id thread;
    MethodInfoStd& add = player.method(
        "add", {{INT, "a"}, {STRING, "b"}},
        [&](MethodInfoStd* record, std::vector<ContainerStd> values,
            std::vector<VariantTypeStd> codes) {
            given_record = record;
            thread = std::this_thread::get_id();
            EXPECT_EQ(values, (std::vector{single(1.0), single("x")}));
            EXPECT_EQ(codes, (std::vector{INT, STRING}));
            return single("done");
        },
        STRING);
    EXPECT_EQ(call(publish(), "add", {1.0, "x"}), QVariant("done"));
    EXPECT_EQ(given_record, &add);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(ContextObject, converts_a_result_by_the_declared_type)
{
    noting_method("list", {}, ARRAY, single("[1,2]"));
    noting_method("nothing", {}, std::nullopt, single(7));
    noting_method("carried", {}, COLOR, single("#fff"));
    noting_method("vector", {}, VECTOR2, single(Vector2Std{1.5, 2.5}));
    DBAbstractContextObject& object = publish();
    EXPECT_EQ(call(object, "list", {}).toList(), (QVariantList{1, 2}));
    EXPECT_FALSE(call(object, "nothing", {}).isValid());
    EXPECT_EQ(call(object, "carried", {}), QVariant("#fff"));
    EXPECT_EQ(call(object, "vector", {}).toList(), (QVariantList{1.5, 2.5}));
}

TEST_F(ContextObject, can_be_called_by_name_through_qt)
{
    noting_method("f", {{INT, "a"}}, INT, single(42));
    QVariant result;
    EXPECT_TRUE(QMetaObject::invokeMethod(&publish(), "___invoke_method", qReturnArg(result),
                                          QVariant("f"), QVariantList{1}));
    EXPECT_EQ(result, QVariant(42));
}

TEST_F(ContextObject, accepts_a_call_of_a_page_only_with_a_list)
{
    noting_method("f", {{INT, "a"}}, INT, single(42));
    DBAbstractContextObject& object = publish();
    QVariant result;
    EXPECT_TRUE(QMetaObject::invokeMethod(&object, "___invoke_method", qReturnArg(result),
                                          QVariant("f"), QVariant(QVariantList{1})));
    EXPECT_EQ(result, QVariant(42));
    for (const QVariant& arguments :
         {QVariant(), QVariant(5), QVariant("x"), QVariant(QVariantMap())}) {
        expect_message("method call error: the arguments of f are not a list. Pass a list with one "
                       "element per argument.");
        EXPECT_FALSE(object.___invoke_method("f", arguments).isValid());
    }
    EXPECT_EQ(calls, 1);
}

TEST_F(ContextObject, refuses_to_call_an_unknown_method)
{
    expect_message("invoke_method: unknown doesn't exist");
    EXPECT_FALSE(call(publish(), "unknown", {}).isValid());
}

TEST_F(ContextObject, refuses_to_call_a_member_that_is_no_method)
{
    player.property("health", INT, single(1));
    player.signal("died");
    DBAbstractContextObject& object = publish();
    expect_message("invoke_method: health was not a method");
    EXPECT_FALSE(call(object, "health", {}).isValid());
    expect_message("invoke_method: died was not a method");
    EXPECT_FALSE(call(object, "died", {}).isValid());
}

TEST_F(ContextObject, logs_a_call_that_the_host_does_not_serve)
{
    player.method("f");
    expect_message("func_call_method was nullptr, failed to call method f");
    EXPECT_FALSE(call(publish(), "f", {}).isValid());
}

TEST_F(ContextObject, passes_a_list_as_a_vector)
{
    noting_method("move", {{VECTOR2, "to"}});
    call(publish(), "move", {QVariant(QVariantList{1.5, 2.5, 3.5})});
    EXPECT_EQ(given_values, std::vector{single(Vector2Std{1.5, 2.5})});
}

TEST_F(ContextObject, does_not_call_the_host_without_the_vector_that_it_declares)
{
    noting_method("move", {{INT, "how"}, {VECTOR3, "to"}}, INT, single(1));
    DBAbstractContextObject& object = publish();
    for (const QVariant& to : {QVariant(7), QVariant(), QVariant(QVariantList{1, 2})}) {
        expect_message(vector_error);
        EXPECT_FALSE(call(object, "move", {1, to}).isValid());
    }
    EXPECT_EQ(calls, 0);
}

TEST_F(ContextObject, logs_the_vector_first_when_the_host_does_not_serve_the_call)
{
    player.method("move", {{VECTOR3, "to"}});
    expect_message(vector_error);
    call(publish(), "move", {1});
}

TEST_F(ContextObject, does_not_call_the_host_with_too_few_or_too_many_arguments)
{
    noting_method("f", {{INT, "a"}, {INT, "b"}});
    DBAbstractContextObject& object = publish();
    for (const QVariantList& arguments : {QVariantList{}, QVariantList{1}, QVariantList{1, 2, 3}}) {
        expect_message_matching("^method call error: f\\(a: INT,b: INT\\) was called with "
                                + std::to_string(arguments.size()) + " ");
        EXPECT_FALSE(call(object, "f", arguments).isValid());
    }
    EXPECT_EQ(calls, 0);
}

TEST_F(ContextObject, records_that_an_argument_is_a_container)
{
    noting_method("f", {{INT, "a"}, {STRING, "b"}});
    DBAbstractContextObject& object = publish();
    call(object, "f", {QVariantMap{{"a", 1}}, "x"});
    EXPECT_EQ(given_values, (std::vector{single(R"({"a":1})"), single("x")}));
    EXPECT_EQ(given_codes, (std::vector{DICTIONARY, STRING}));

    const auto type_of_a = [](const QVariant& entry) { return entry.toMap()["type"]; };
    EXPECT_EQ(type_of_a(object.methods_map()["f"].toMap()["args"].toMap()["a"]), QVariant(28));
    EXPECT_EQ(type_of_a(published_method("player.f").description()["args"].toList()[0]),
              QVariant(28));
    EXPECT_EQ(object.get_method_signature(QString("f")), QVariant("f(a: DICTIONARY,b: STRING)"));

    call(object, "f", {5, QVariantList{1}});
    EXPECT_EQ(given_values, (std::vector{single("{}"), single("[1]")}));
    EXPECT_EQ(given_codes, (std::vector{DICTIONARY, ARRAY}));
    EXPECT_EQ(player.record().methods["f"]->args[0].type, INT)
        << "the library does not write to the host's record";
}

TEST_F(ContextObject, calls_the_host_with_zero_for_a_value_without_a_type_of_the_host)
{
    noting_method("f", {{INT, "a"}});
    expect_message_matching("erm, unknown type, \\(possibly\\) FIX ME: 51$");
    call(publish(), "f", {QVariant::fromValue(nullptr)});
    EXPECT_EQ(given_values, std::vector{single(0)});
}

TEST_F(ContextObject, returns_no_result_when_the_host_s_does_not_match_the_type)
{
    noting_method("f", {}, ARRAY, single(7));
    noting_method("g", {}, INT, std::vector<ValueStd>{1, 2});
    DBAbstractContextObject& object = publish();
    expect_message_matching("^the result of method f does not match its type ARRAY");
    EXPECT_FALSE(call(object, "f", {}).isValid());
    expect_message_matching("^the result of method g does not match its type INT");
    EXPECT_FALSE(call(object, "g", {}).isValid());
}

TEST_F(ContextObject, catches_an_exception_of_the_host)
{
    player.method(
        "f", {}, [](auto...) -> ContainerStd { throw std::runtime_error("broken"); }, ARRAY);
    expect_message_matching("^player: broken");
    EXPECT_FALSE(call(publish(), "f", {}).isValid());
}

TEST_F(ContextObject, lets_a_method_call_another_one)
{
    noting_method("inner", {}, INT, single(5));
    player.method(
        "outer", {},
        [this](auto...) { return single(call(published("player"), "inner", {}).toInt() + 1); },
        INT);
    EXPECT_EQ(call(publish(), "outer", {}), QVariant(6));
}

TEST_F(ContextObject, keeps_the_state_that_a_callback_changes)
{
    player.method(
        "count", {}, [calls = 0](auto...) mutable { return single(++calls); }, INT);
    int last = 0;
    player.property("health", INT, single(1)).func_valueChanged_updateGodot =
        [&last, calls = 0](PropertyInfoStd*) mutable { last = ++calls; };
    DBAbstractContextObject& object = publish();
    call(object, "count", {});
    EXPECT_EQ(call(object, "count", {}), QVariant(2));
    published_property("player.health").set_value(2);
    published_property("player.health").set_value(3);
    EXPECT_EQ(last, 2);
}

TEST_F(ContextObject, calls_the_callback_with_which_the_host_has_replaced_another)
{
    MethodInfoStd& method = player.method(
        "f", {}, [](auto...) { return single(1); }, INT);
    DBAbstractContextObject& object = publish();
    EXPECT_EQ(call(object, "f", {}), QVariant(1));
    method.func_call_method = [](auto...) { return single(2); };
    EXPECT_EQ(call(object, "f", {}), QVariant(2));
}

TEST_F(ContextObject, may_be_withdrawn_and_its_records_freed_during_its_own_call)
{
    auto records = std::make_unique<HostObject>("brief");
    records->property("p", INT, single(1));
    records->method(
        "leave", {},
        [&](auto...) {
            EXPECT_TRUE(manager->deregisterObject("brief"));
            records.reset();
            return single("gone");
        },
        STRING);
    ASSERT_TRUE(manager->registerObject("brief", &records->record()));
    EXPECT_EQ(call(published("brief"), "leave", {}), QVariant("gone"));
    serve_events();
    EXPECT_TRUE(channel.registeredObjects().isEmpty());
}

TEST_F(ContextObject, does_nothing_more_once_it_is_withdrawn)
{
    auto records = std::make_unique<HostObject>("brief");
    records->property("p", INT, single(1));
    records->method("f", {}, [](auto...) { return single(1); });
    ASSERT_TRUE(manager->registerObject("brief", &records->record()));
    DBAbstractContextObject& object = published("brief");
    DBPropertyInfo& property = published_property("brief.p");
    manager->deregisterObject("brief");
    records.reset();
    // The objects are not deleted yet, because QML may still hold them.
    EXPECT_FALSE(property.value().isValid());
    property.set_value(5);
    object.methods_map();
    object.variables_map();
    expect_message("invoke_method: f doesn't exist");
    EXPECT_FALSE(call(object, "f", {}).isValid());
}

TEST_F(ContextObject, deletes_the_children_of_a_method_later)
{
    player.method("f");
    publish();
    QPointer<QObject> owned = new QObject(&published_method("player.f"));
    manager->deregisterObject("player");
    manager.reset();
    EXPECT_TRUE(owned);
    serve_events();
    EXPECT_FALSE(owned);
}

// --- Writes

TEST_F(ContextObject, stores_what_a_page_writes_and_notifies_the_host)
{
    PropertyInfoStd& health = player.property("health", INT, single(100));
    int told = 0;
    health.func_valueChanged_updateGodot = [&](PropertyInfoStd* property) {
        ++told;
        EXPECT_EQ(property, &health);
        EXPECT_EQ(health.value, single(50)) << "the host is notified after the write";
    };
    publish();
    EXPECT_TRUE(published_property("player.health").setProperty("value", 50.0));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(published_property("player.health").property("value"), QVariant(50));
}

TEST_F(ContextObject, stores_a_float_as_the_game_engine_does)
{
    PropertyInfoStd& speed = player.property("speed", FLOAT, single(1.0));
    speed.func_valueChanged_updateGodot = [](PropertyInfoStd*) {};
    publish();
    published_property("player.speed").set_value(0.1);
    EXPECT_EQ(speed.value, single(static_cast<double>(0.1F)));
}

TEST_F(ContextObject, stores_what_a_page_writes_also_without_a_callback_of_the_host)
{
    PropertyInfoStd& health = player.property("health", INT, single(100));
    publish();
    testing::internal::CaptureStderr();
    published_property("player.health").set_value(50);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "func_valueChanged_updateGodot nullptr! health\n");
    EXPECT_EQ(health.value, single(50));
}

TEST_F(ContextObject, notifies_the_host_also_about_a_property_whose_type_is_a_mere_label)
{
    PropertyInfoStd& colour = player.property("colour", COLOR, single("red"));
    int told = 0;
    colour.func_valueChanged_updateGodot = [&](PropertyInfoStd*) { ++told; };
    publish();
    published_property("player.colour").set_value("#fff");
    EXPECT_EQ(colour.value, single("#fff"));
    EXPECT_EQ(told, 1);
}

TEST_F(ContextObject, refuses_an_invalid_vector_and_keeps_the_value)
{
    PropertyInfoStd& place = player.property("place", VECTOR3, single(Vector3Std{1, 2, 3}));
    int told = 0;
    place.func_valueChanged_updateGodot = [&](PropertyInfoStd*) { ++told; };
    publish();
    for (const QVariant& value : {QVariant(5), QVariant(), QVariant(QVariantList{1, 2})}) {
        expect_message("cannot set property 'player.place', it is a VECTOR3. Pass a list with one "
                       "number per component.");
        published_property("player.place").set_value(value);
    }
    EXPECT_EQ(place.value, single(Vector3Std{1, 2, 3}));
    EXPECT_EQ(told, 0);
}

TEST_F(ContextObject, returns_no_value_when_the_record_s_does_not_match_the_type)
{
    player.property("bag", ARRAY, single(7));
    DBAbstractContextObject& object = publish();
    const std::string message = "^property 'player.bag' does not match its type ARRAY";
    expect_message_matching(message);
    EXPECT_FALSE(published_property("player.bag").value().isValid());
    expect_message_matching(message);
    EXPECT_FALSE(object.variables_map()["bag"].toMap()["value"].isValid());
}

TEST_F(ContextObject, catches_an_exception_that_the_host_throws_at_a_write)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    health.func_valueChanged_updateGodot = [](PropertyInfoStd*) {
        throw std::runtime_error("broken");
    };
    publish();
    expect_message_matching("^player: broken");
    published_property("player.health").set_value(2);
    EXPECT_EQ(health.value, single(2));
}

TEST_F(ContextObject, may_be_withdrawn_and_its_records_freed_when_a_write_is_reported)
{
    auto records = std::make_unique<HostObject>("brief");
    records->property("p", INT, single(1)).func_valueChanged_updateGodot = [&](PropertyInfoStd*) {
        manager->deregisterObject("brief");
        records.reset();
    };
    ASSERT_TRUE(manager->registerObject("brief", &records->record()));
    published_property("brief.p").set_value(2);
    EXPECT_FALSE(records);
    serve_events();
}

TEST_F(ContextObject, does_not_hold_the_lock_of_values_while_the_host_is_called)
{
    const auto take_the_lock_elsewhere = [] { std::thread([] { const ValueLock lock; }).join(); };
    PropertyInfoStd& health = player.property("health", INT, single(1));
    health.func_valueChanged_updateGodot = [&](PropertyInfoStd*) {
        take_the_lock_elsewhere();
        const ValueLock lock;
        health.value = ValueStd(3);
    };
    player.method("f", {}, [&](auto...) {
        take_the_lock_elsewhere();
        const ValueLock lock;
        return single(1);
    });
    DBAbstractContextObject& object = publish();
    published_property("player.health").set_value(2);
    call(object, "f", {});
    EXPECT_EQ(published_property("player.health").value(), QVariant(3));
}

TEST_F(ContextObject, never_reads_a_value_that_another_thread_is_writing)
{
    const std::string dark(1000, 'd');
    const std::string light(1000, 'l');
    PropertyInfoStd& mood = player.property("mood", STRING, single(dark));
    publish();
    DBPropertyInfo& property = published_property("player.mood");
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i) {
            const ValueLock lock;
            mood.value = ValueStd(i % 2 ? dark : light);
        }
        done = true;
    });
    while (!done) {
        const std::string value = property.value().toString().toStdString();
        EXPECT_TRUE(value == dark || value == light);
    }
    writer.join();
}

// --- Announcements

TEST_F(ContextObject, notifies_pages_of_a_change_with_the_value_at_that_time)
{
    PropertyInfoStd& health = player.property("health", INT, single(100));
    publish();
    std::thread([&] { health.func_valueChanged_updateQt(&health); }).join();
    EXPECT_TRUE(changes.empty()) << "the host's thread must not wait for the pages";
    health.value = ValueStd(20);
    serve_events();
    EXPECT_EQ(changes, (std::vector<Report>{{"player", "health", 20}}));
}

TEST_F(ContextObject, reports_a_change_by_the_property_s_type)
{
    PropertyInfoStd& bag = player.property("bag", DICTIONARY, single(R"({"gold":3})"));
    PropertyInfoStd& nothing = player.property("nothing", NIL, single(1));
    publish();
    bag.func_valueChanged_updateQt(&bag);
    nothing.func_valueChanged_updateQt(&nothing);
    serve_events();
    EXPECT_EQ(changes,
              (std::vector<Report>{{"player", "bag", QVariantMap{{"gold", 3}}},
                                   {"player", "nothing", QVariant()}}));
}

TEST_F(ContextObject, reports_a_change_to_a_value_of_another_type)
{
    PropertyInfoStd& bag = player.property("bag", ARRAY, single("[]"));
    publish();
    bag.value = std::vector<ValueStd>{1};
    bag.func_valueChanged_updateQt(&bag);
    expect_message_matching("^property 'player.bag' does not match its type ARRAY");
    serve_events();
    EXPECT_EQ(changes, (std::vector<Report>{{"player", "bag", QVariant()}}));
}

TEST_F(ContextObject, reports_a_change_whatever_pointer_the_host_passes)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    publish();
    health.func_valueChanged_updateQt(nullptr);
    serve_events();
    EXPECT_EQ(changes, (std::vector<Report>{{"player", "health", 1}}));
}

TEST_F(ContextObject, notifies_qml_of_a_change)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    health.func_valueChanged_updateGodot = [](PropertyInfoStd*) {};
    publish();
    int signals_seen = 0;
    QObject::connect(&published_property("player.health"), &DBPropertyInfo::NOPSignal,
                     [&] { ++signals_seen; });
    health.func_valueChanged_updateQt(&health);
    serve_events();
    EXPECT_EQ(signals_seen, 1);
    published_property("player.health").set_value(2);
    EXPECT_EQ(signals_seen, 2);
}

TEST_F(ContextObject, emits_a_signal_of_the_host_with_each_value_by_its_code)
{
    MethodInfoStd& hit = player.signal("hit", {{INT, "by"}});
    publish();
    std::thread([&] {
        hit.func_emit_signal(&hit,
                             {single(7), single("[1]"), single(R"({"a":1})"), single(5),
                              single("text"), single(Vector2iStd{1, 2}), single(1.5)},
                             {INT, ARRAY, DICTIONARY, NIL, UNKNOWN, VECTOR2I});
    }).join();
    EXPECT_TRUE(emissions.empty()) << "the host's thread must not wait for the pages";
    serve_events();
    const QVariantList values = {
        7, QVariantList{1}, QVariantMap{{"a", 1}}, QVariant(), "text", QVariantList{1, 2}, 1.5};
    EXPECT_EQ(emissions, (std::vector<Report>{{"player", "hit", values}}));
}

TEST_F(ContextObject, emits_a_signal_with_no_value_in_place_of_one_of_another_type)
{
    MethodInfoStd& hit = player.signal("hit");
    publish();
    hit.func_emit_signal(&hit, {single(7), std::map<std::string, ValueStd>{}, single(8)},
                         {INT, UNKNOWN, DICTIONARY});
    expect_message_matching("^value 2 of signal 'player.hit' does not match its type UNKNOWN");
    expect_message_matching("^value 3 of signal 'player.hit' does not match its type DICTIONARY");
    serve_events();
    EXPECT_EQ(emissions,
              (std::vector<Report>{{"player", "hit", QVariantList{7, QVariant(), QVariant()}}}));
}

TEST_F(ContextObject, lets_the_host_emit_only_signals)
{
    MethodInfoStd& method = player.method("f");
    MethodInfoStd& signal = player.signal("s");
    publish();
    EXPECT_FALSE(method.func_emit_signal);
    EXPECT_TRUE(signal.func_emit_signal);
}

TEST_F(ContextObject, reports_under_the_record_s_name_and_the_key_of_the_member)
{
    HostObject other("inner name");
    PropertyInfoStd& property = other.property("p", INT, single(1));
    MethodInfoStd& signal = other.signal("s");
    ASSERT_TRUE(manager->registerObject("outer name", &other.record()));
    property.func_valueChanged_updateQt(&property);
    signal.func_emit_signal(&signal, {}, {});
    serve_events();
    EXPECT_EQ(changes, (std::vector<Report>{{"inner name", "p", 1}}));
    EXPECT_EQ(emissions, (std::vector<Report>{{"inner name", "s", QVariantList()}}));
}

TEST_F(ContextObject, reports_in_the_order_of_the_calls)
{
    MethodInfoStd& signal = player.signal("s");
    PropertyInfoStd& health = player.property("health", INT, single(1));
    publish();
    std::vector<QString> order;
    QObject::connect(manager.get(), &DataBindingContextManager::propChanged,
                     [&] { order.push_back("p"); });
    QObject::connect(manager.get(), &DataBindingContextManager::gdscriptSignalEmitted,
                     [&] { order.push_back("s"); });
    std::thread([&] {
        signal.func_emit_signal(&signal, {}, {});
        health.func_valueChanged_updateQt(&health);
        signal.func_emit_signal(&signal, {}, {});
    }).join();
    serve_events();
    EXPECT_EQ(order, (std::vector<QString>{"s", "p", "s"}));
}

TEST_F(ContextObject, loses_no_report_of_many_threads)
{
    MethodInfoStd& signal = player.signal("s");
    PropertyInfoStd& health = player.property("health", INT, single(1));
    publish();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            for (int n = 0; n < 200; ++n) {
                signal.func_emit_signal(&signal, {single(i)}, {INT});
                health.func_valueChanged_updateQt(&health);
            }
        });
    }
    EXPECT_TRUE(serve_until([&] { return emissions.size() == 1600 && changes.size() == 1600; }));
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(ContextObject, drops_signals_while_too_many_wait_and_logs_it_once)
{
    MethodInfoStd& signal = player.signal("s");
    publish();
    for (size_t round = 1; round <= 2; ++round) {
        expect_message(
            "signal 'player.s' is dropped because 20000 of its emissions are waiting. Emit it "
            "less often, and keep callbacks short.");
        for (int i = 0; i < Backlog::most_waiting + 100; ++i)
            signal.func_emit_signal(&signal, {single(i)}, {INT});
        serve_events();
        EXPECT_EQ(emissions.size(), round * Backlog::most_waiting);
        EXPECT_EQ(emissions.back().value, QVariantList{Backlog::most_waiting - 1});
    }
    signal.func_emit_signal(&signal, {single(1)}, {INT});
    serve_events();
    EXPECT_EQ(emissions.back().value, QVariantList{1});
}

TEST_F(ContextObject, reports_the_last_value_of_changes_while_too_many_wait)
{
    PropertyInfoStd& health = player.property("health", INT, single(0));
    publish();
    for (int i = 1; i <= Backlog::most_waiting + 100; ++i) {
        health.value = single(i);
        health.func_valueChanged_updateQt(&health);
    }
    serve_events();
    EXPECT_EQ(changes.size(), size_t(Backlog::most_waiting));
    EXPECT_EQ(changes.back(), (Report{"player", "health", Backlog::most_waiting + 100}));
}

TEST_F(ContextObject, reports_nothing_once_it_is_withdrawn)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    MethodInfoStd& signal = player.signal("s");
    publish();
    health.func_valueChanged_updateQt(&health);  // this one is still queued
    manager->deregisterObject("player");
    health.func_valueChanged_updateQt(&health);
    signal.func_emit_signal(&signal, {single(1)}, {INT});
    serve_events();
    health.func_valueChanged_updateQt(&health);
    serve_events();
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(emissions.empty());
}

TEST_F(ContextObject, reports_nothing_once_its_view_is_destroyed)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    MethodInfoStd& signal = player.signal("s");
    publish();
    health.func_valueChanged_updateQt(&health);
    manager.reset();
    std::thread([&] {
        health.func_valueChanged_updateQt(&health);
        signal.func_emit_signal(&signal, {single(1)}, {INT});
    }).join();
    serve_events();
    EXPECT_TRUE(changes.empty());
    EXPECT_TRUE(emissions.empty());
}

TEST_F(ContextObject, is_not_mistaken_for_an_earlier_object_at_the_same_address)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    std::vector<decltype(health.func_valueChanged_updateQt)> stale;
    // Repeated, so that the allocator is sure to use the same memory again.
    for (int i = 0; i < 20; ++i) {
        publish();
        stale.push_back(health.func_valueChanged_updateQt);
        manager->deregisterObject("player");
        serve_events();
    }
    publish();
    for (const auto& announce : stale)
        announce(&health);
    serve_events();
    EXPECT_TRUE(changes.empty());
    health.func_valueChanged_updateQt(&health);
    serve_events();
    EXPECT_EQ(changes.size(), 1u);
}

TEST_F(ContextObject, may_be_changed_while_it_is_published_and_withdrawn)
{
    PropertyInfoStd& health = player.property("health", INT, single(1));
    publish();
    const auto announce = health.func_valueChanged_updateQt;
    manager->deregisterObject("player");
    std::atomic<bool> done = false;
    std::thread announcer([&] {
        while (!done)
            announce(&health);
    });
    for (int i = 0; i < 200; ++i) {
        publish();
        serve_events();
        manager->deregisterObject("player");
    }
    done = true;
    announcer.join();
    serve_events();
    EXPECT_TRUE(changes.empty());
}

TEST_F(ContextObject, fills_the_host_s_records_without_holding_the_lock_of_values)
{
    const MethodInfoStd& died = player.signal("died");
    const PropertyInfoStd& health = player.property("health", INT, single(100));
    std::atomic<bool> is_looking = false;
    bool is_filled_meanwhile = true;
    std::thread looker([&] {
        const ValueLock lock;
        is_looking = true;
        is_filled_meanwhile =
            wait_until([&] { return died.func_emit_signal || health.func_valueChanged_updateQt; },
                       std::chrono::milliseconds(100));
    });
    EXPECT_TRUE(wait_until([&] { return is_looking.load(); }));
    publish();
    looker.join();
    EXPECT_FALSE(is_filled_meanwhile);
    EXPECT_TRUE(died.func_emit_signal && health.func_valueChanged_updateQt);
}

}  // namespace marlune::test
