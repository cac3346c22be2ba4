// The transport between a page and the channel: which messages it passes on, and what a page can
// make it do.

#include "binding/page_transport.h"

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/method_info.h"
#include "binding/property_info.h"
#include "support/message_log.h"
#include "support/qt_loop.h"
#include "support/web/fake_transport.h"
#include "support/web/host_object.h"

#include <QJsonArray>
#include <QMetaMethod>
#include <QPointer>
#include <QWebChannel>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace marlune::test {

using namespace marlune::db;

namespace {

using enum VariantTypeStd;

enum Type {
    SIGNAL_MESSAGE = 1,
    UPDATE,
    INIT,
    IDLE,
    DEBUG,
    INVOKE,
    CONNECT,
    DISCONNECT,
    SET,
    RESPONSE
};
constexpr int BUNDLE = 100;
constexpr int VALUE_PROPERTY = 4;

const QJsonObject reference{{"__QObject*__", true}, {"id", "other"}};

std::string dropped(const std::string& what)
{
    return "WebView 0: a page has sent " + what
        + ". It is dropped. Further messages of this kind are not reported.";
}

class Transport : public testing::Test {
protected:
    Transport()
    {
        have_application();
        // A message of Qt for each object that is registered while a page is connected.
        allow_messages_matching("^Registered new object after initialization");
        channel.setPropertyUpdateInterval(-1);
        manager = std::make_unique<DataBindingContextManager>(&channel, nullptr);
        channel.registerObject("___cm", manager.get());
        health = &player.property("health", INT, ValueStd(100));
        health->func_valueChanged_updateGodot = [](PropertyInfoStd*) {};
        player.method(
            "echo", {{UNKNOWN, "value"}},
            [this](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
                given = values.at(0);
                return values.at(0);
            },
            UNKNOWN);
        died = &player.signal("died");
        EXPECT_TRUE(manager->registerObject("player", &player.record()));
        transport = new PageTransport(&page, &channel, "WebView 0");
    }

    void receive(const QJsonObject& message)
    {
        if (message["type"] == BUNDLE) {
            for (const QJsonValue part : message["data"].toArray())
                receive(part.toObject());
            return;
        }
        received.push_back(message);
        if (message["type"] == UPDATE && reads)
            page.post({{"type", IDLE}});
    }

    /** Connects as a client does. */
    void open(const QJsonObject& additions = {})
    {
        QJsonObject question{{"type", INIT}, {"id", "init"}};
        for (auto addition = additions.begin(); addition != additions.end(); ++addition)
            question[addition.key()] = addition.value();
        page.post(question);
        ASSERT_TRUE(serve_until([&] { return answer_to("init"); }));
        page.post({{"type", IDLE}});
    }

    const QJsonObject* answer_to(const QJsonValue& id) const
    {
        const auto found = std::ranges::find_if(received, [&](const QJsonObject& message) {
            return message["type"] == RESPONSE && message["id"] == id;
        });
        return found == received.end() ? nullptr : &*found;
    }

    /** Waits until all messages sent so far have been served. */
    void settle()
    {
        const QString id = QStringLiteral("settle %1").arg(++settled);
        page.post({{"type", INIT}, {"id", id}, {"objects", QJsonArray()}});
        ASSERT_TRUE(serve_until([&] { return answer_to(id); }));
        serve_events();
    }

    /** Also serves events that other events cause. A page that hangs could not answer settle(). */
    static void serve_all_events()
    {
        for (int i = 0; i < 10; ++i)
            serve_events();
    }

    QJsonValue call(const char* object, const QJsonValue& method, const QJsonArray& arguments)
    {
        const QString id = QStringLiteral("call %1").arg(++calls);
        page.post({{"type", INVOKE},
                   {"id", id},
                   {"object", object},
                   {"method", method},
                   {"args", arguments}});
        EXPECT_TRUE(serve_until([&] { return answer_to(id); }));
        return (*answer_to(id))["data"];
    }

    /** Calls the method, and does not wait for the answer. */
    void post_echo(int id, const QJsonValue& value)
    {
        page.post({{"type", INVOKE},
                   {"id", id},
                   {"object", "player"},
                   {"method", "___invoke_method"},
                   {"args", QJsonArray{"echo", QJsonArray{value}}}});
    }

    void write(const char* object, int property, const QJsonValue& value)
    {
        page.post({{"type", SET}, {"object", object}, {"property", property}, {"value", value}});
        settle();
    }

    void announce(int value)
    {
        health->value = ValueStd(value);
        health->func_valueChanged_updateQt(health);
    }

    std::vector<QJsonObject> messages(int type) const
    {
        std::vector<QJsonObject> result;
        std::ranges::copy_if(received, std::back_inserter(result),
                             [&](const QJsonObject& message) { return message["type"] == type; });
        return result;
    }

    int signal_number(const char* name) const
    {
        const QMetaObject& meta = DataBindingContextManager::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).name() == name)
                return i;
        }
        return -1;
    }

    void connect_to(const char* signal)
    {
        page.post({{"type", CONNECT}, {"object", "___cm"}, {"signal", signal_number(signal)}});
    }

    template <typename Kind>
    Kind* published(const char* name) const
    {
        return qobject_cast<Kind*>(channel.registeredObjects().value(name));
    }

    QWebChannel channel;
    std::unique_ptr<DataBindingContextManager> manager;
    HostObject player{"player"}, other{"other"};
    PropertyInfoStd* health = nullptr;
    MethodInfoStd* died = nullptr;
    ContainerStd given;
    bool reads = true;
    std::vector<QJsonObject> received;
    FakeTransport page{[this](const QJsonObject& message) { receive(message); }};
    PageTransport* transport = nullptr;
    int calls = 0, settled = 0;
};

}  // namespace

// --- What a page cannot do

TEST_F(Transport, lets_no_page_delete_a_published_object)
{
    open();
    const QHash<QString, QObject*> before = channel.registeredObjects();
    const std::vector<QPointer<QObject>> objects(before.begin(), before.end());
    expect_message_matching("a page has sent a call of a method that pages cannot call");
    for (const QString& name : before.keys()) {
        for (int i = 0; i < 16; ++i)
            call(qUtf8Printable(name), i, {});
        call(qUtf8Printable(name), "deleteLater", {});
        call(qUtf8Printable(name), "deleteLater()", {});
    }
    settle();
    EXPECT_TRUE(std::ranges::all_of(objects, [](const auto& object) { return !object.isNull(); }));
    EXPECT_TRUE(manager->registerObject("other", &other.record()));
    EXPECT_TRUE(manager->deregisterObject("player"));
}

TEST_F(Transport, lets_no_page_disconnect_the_channel_from_objects)
{
    open();
    expect_message_matching("a page has sent a connection to a signal that pages cannot use");
    for (const QString& name : channel.registeredObjects().keys()) {
        for (int signal = -1; signal < 16; ++signal) {
            for (const int type : {DISCONNECT, CONNECT, DISCONNECT, DISCONNECT})
                page.post({{"type", type}, {"object", name}, {"signal", signal}});
        }
    }
    settle();
    announce(7);
    EXPECT_TRUE(serve_until([&] { return !messages(UPDATE).empty(); }))
        << "changes still reach the page";
    EXPECT_TRUE(manager->deregisterObject("player"));
    settle();
    EXPECT_EQ(channel.registeredObjects().keys(), QStringList("___cm"));
}

TEST_F(Transport, lets_pages_write_only_the_values_of_properties)
{
    open();
    expect_message(dropped("a write to a property that pages cannot write (\"___cm\")"));
    const auto* const property = published<DBPropertyInfo>("player.health");
    for (const char* const name : {"___cm", "player", "player.echo", "player.health"}) {
        for (int i = -1; i < 8; ++i) {
            if (i != VALUE_PROPERTY || name != std::string("player.health"))
                write(name, i, "forged\nline");
        }
        EXPECT_EQ(channel.registeredObjects().value(name)->objectName(),
                  name == std::string("player") ? "player" : "");
    }
    EXPECT_EQ(property->name(), QVariant("health"));
    EXPECT_EQ(property->class_name(), QVariant(""));
    EXPECT_EQ(property->hint_string(), QVariant(""));
    write("player.health", VALUE_PROPERTY, 50);
    EXPECT_EQ(health->value, ContainerStd(ValueStd(50)));
}

TEST_F(Transport, treats_data_that_looks_like_an_object_as_data)
{
    PropertyInfoStd& bag = player.property("bag", DICTIONARY, ValueStd("{}"));
    bag.func_valueChanged_updateGodot = [](PropertyInfoStd*) {};
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(manager->registerObject("player", &player.record()));
    EXPECT_TRUE(manager->registerObject("other", &other.record()));
    open();
    const std::string text = R"({"__QObject*__":true,"id":"other"})";
    write("player.bag", VALUE_PROPERTY, QJsonObject{{"deep", QJsonArray{reference}}});
    EXPECT_EQ(bag.value, ContainerStd(ValueStd(R"({"deep":[)" + text + "]}")));
    call("player", "___invoke_method", {"echo", QJsonArray{reference}});
    EXPECT_EQ(given, ContainerStd(ValueStd(text)));
}

TEST_F(Transport, logs_dropped_messages_once)
{
    const std::string name = "x\ny" + std::string(1000, 'x');
    open();
    expect_message(dropped("a message of an unknown type"));
    expect_message(dropped("a message to an object that does not exist (\"x\\u000ay"
                           + std::string(77, 'x') + "\u2026\")"));
    for (int i = 0; i < 10; ++i) {
        for (const QJsonValue& type :
             {QJsonValue(DEBUG), QJsonValue(11), QJsonValue(-1), QJsonValue("x"), QJsonValue()})
            page.post({{"type", type}, {"data", "to standard output\n"}, {"object", "player"}});
        EXPECT_TRUE(call(name.c_str(), "___invoke_method", {"f", QJsonArray()}).isNull());
    }
    page.post({});
    settle();
    EXPECT_TRUE(all_expected_messages_came());

    transport->expect_page();
    expect_message(dropped("a message of an unknown type"));
    page.post({});
    settle();
}

TEST_F(Transport, drops_messages_that_are_too_large)
{
    open();
    expect_message(dropped("a message that is too large"));
    const auto text = QString(PageTransport::largest_message, 'x');
    for (int i = 0; i < 2; ++i)
        write("player.health", VALUE_PROPERTY, text);
    EXPECT_EQ(health->value, ContainerStd(ValueStd(100)));
    call("player", "___invoke_method", {"echo", QJsonArray{text.left(text.size() - 1000)}});
    EXPECT_EQ(std::get<std::string>(std::get<ValueStd>(given)).size(), size_t(text.size()) - 1000);
}

TEST_F(Transport, limits_what_a_page_can_write_to_the_log)
{
    open();
    const QString name = "a\nb\u202e" + QString(10'000, 'c');
    const std::string shown = "a\\u000ab\\u202e" + std::string(76, 'c') + "\u2026";
    expect_message("a page has caused 99 warnings. Further warnings are not logged.");
    for (int i = 0; i < 99; ++i)
        expect_message("invoke_method: " + shown + " doesn't exist");
    for (int i = 0; i < 120; ++i)
        EXPECT_TRUE(call("player", "___invoke_method", {name, QJsonArray()}).isNull());
    EXPECT_TRUE(all_expected_messages_came());

    transport->expect_page();
    expect_message("invoke_method: next doesn't exist");
    call("player", "___invoke_method", {"next", QJsonArray()});
    expect_message("invoke_method: in QML doesn't exist");
    published<DBAbstractContextObject>("player")->___invoke_method("in QML", QVariantList());
}

TEST_F(Transport, answers_refused_calls_with_no_value)
{
    open();
    expect_message_matching("a call of a method that pages cannot call \\(\"registerObject\"\\)");
    EXPECT_TRUE(call("___cm", "registerObject", {"player", "player"}).isNull());
    EXPECT_TRUE(call("___cm", "deregisterObject", {"player"}).isNull());
    EXPECT_TRUE(call("player", "___invoke_method", {}).isNull());
    EXPECT_TRUE(call("player", "___invoke_method", {"echo", QJsonArray{1}, 1}).isNull());
    EXPECT_TRUE(call("player", "get_method_signature", {}).isNull());
    EXPECT_TRUE(call("player.echo", "___invoke_method", {"echo", QJsonArray{1}}).isNull());
    EXPECT_TRUE(published<DBAbstractContextObject>("player"));
}

// --- Additions to Qt's channel

TEST_F(Transport, answers_a_write_with_the_value_that_the_property_has_then)
{
    health->func_valueChanged_updateGodot = [](PropertyInfoStd* written) {
        written->value = ValueStd(std::min(100, std::get<int>(std::get<ValueStd>(written->value))));
    };
    open();
    page.post({{"type", SET},
               {"id", "write"},
               {"object", "player.health"},
               {"property", VALUE_PROPERTY},
               {"value", 150}});
    ASSERT_TRUE(serve_until([&] { return answer_to("write"); }));
    EXPECT_EQ((*answer_to("write"))["data"], 100);
    EXPECT_TRUE(manager->deregisterObject("player"));
    expect_message_matching("a message to an object that does not exist");
    page.post({{"type", SET}, {"id", "late"}, {"object", "player.health"}});
    ASSERT_TRUE(serve_until([&] { return answer_to("late"); }));
    EXPECT_FALSE(answer_to("late")->contains("data"));
}

TEST_F(Transport, describes_requested_objects_as_the_channel_does)
{
    EXPECT_TRUE(manager->registerObject("other", &other.record()));
    open();
    const QJsonObject all = (*answer_to("init"))["data"].toObject();
    EXPECT_EQ(
        all.keys(),
        (QStringList{"___cm", "other", "player", "player.died", "player.echo", "player.health"}));
    page.post({{"type", INIT}, {"id", "some"}, {"objects", QJsonArray{"player", "unknown", 7}}});
    page.post({{"type", INIT}, {"id", "cm"}, {"objects", QJsonArray{"___cm"}}});
    ASSERT_TRUE(serve_until([&] { return answer_to("cm"); }));
    const QJsonObject some = (*answer_to("some"))["data"].toObject();
    EXPECT_EQ(some.keys(), (QStringList{"player", "player.died", "player.echo", "player.health"}));
    for (const QString& name : some.keys())
        EXPECT_EQ(some[name], all[name]);
    EXPECT_EQ((*answer_to("cm"))["data"].toObject()["___cm"], all["___cm"]);
}

TEST_F(Transport, reports_properties_of_objects_that_were_described_separately)
{
    open({{"objects", QJsonArray{"___cm"}}});
    page.post({{"type", INIT}, {"id", "all"}});
    ASSERT_TRUE(serve_until([&] { return answer_to("all"); }));
    PropertyInfoStd& mana = other.property("mana", INT, ValueStd(1));
    EXPECT_TRUE(manager->registerObject("other", &other.record()));
    page.post({{"type", INIT}, {"id", "some"}, {"objects", QJsonArray{"other"}}});
    ASSERT_TRUE(serve_until([&] { return answer_to("some"); }));
    mana.value = ValueStd(2);
    mana.func_valueChanged_updateQt(&mana);
    ASSERT_TRUE(serve_until([&] { return !messages(UPDATE).empty(); }));
    const QJsonObject update = messages(UPDATE)[0]["data"][0].toObject();
    EXPECT_EQ(update["object"], "other.mana");
    EXPECT_EQ(update["properties"][QString::number(VALUE_PROPERTY)], 2);
}

// --- Pages that read no messages

TEST_F(Transport, keeps_only_the_last_value_for_a_page_that_hangs)
{
    open();
    connect_to("propChanged");
    settle();
    reads = false;
    received.clear();
    for (int i = 1; i <= 20'000; ++i)
        announce(i);
    serve_all_events();
    const size_t sent = received.size();
    EXPECT_GE(sent, size_t(PageOutbox::most_unanswered));
    EXPECT_LE(sent, size_t(PageOutbox::most_unanswered) + 100);
    for (int i = 1; i <= 20'000; ++i) {
        announce(-i);
        if (i % 1000 == 0)
            serve_events();
    }
    serve_all_events();
    EXPECT_EQ(received.size(), sent);

    reads = true;
    page.post({{"type", IDLE}});
    ASSERT_TRUE(serve_until([&] {
        return !messages(SIGNAL_MESSAGE).empty()
            && messages(SIGNAL_MESSAGE).back()["args"][2] == -20'000;
    }));
    EXPECT_LE(received.size(), sent + 200) << "the page has received obsolete values";
    EXPECT_EQ(messages(UPDATE).back()["data"][0]["properties"][QString::number(VALUE_PROPERTY)],
              -20'000);
}

TEST_F(Transport, sends_the_next_page_no_messages_that_the_page_before_has_not_read)
{
    open({{"bundles", true}});
    connect_to("propChanged");
    connect_to("gdscriptSignalEmitted");
    settle();
    reads = false;
    for (int i = 1; i <= 5000; ++i) {
        announce(i);
        died->func_emit_signal(died, {ValueStd(i)}, {INT});
    }
    serve_all_events();
    reads = true;
    received.clear();
    open({{"bundles", true}});
    settle();
    EXPECT_TRUE(messages(UPDATE).empty());
    EXPECT_TRUE(messages(SIGNAL_MESSAGE).empty());
    announce(6000);
    EXPECT_TRUE(serve_until([&] { return messages(SIGNAL_MESSAGE).size() == 1; }));
}

TEST_F(Transport, drops_the_oldest_signals_for_a_page_that_hangs)
{
    open();
    connect_to("gdscriptSignalEmitted");
    settle();
    reads = false;
    received.clear();
    expect_message_matching(
        "the page does not process its messages fast enough. The oldest signals are dropped");
    constexpr int count = 20'000;
    for (int i = 1; i <= count; ++i)
        died->func_emit_signal(died, {ValueStd(i)}, {INT});
    serve_events();
    reads = true;
    page.post({{"type", IDLE}});
    ASSERT_TRUE(serve_until([&] {
        return !messages(SIGNAL_MESSAGE).empty()
            && messages(SIGNAL_MESSAGE).back()["args"][2][0] == count;
    }));
    EXPECT_LE(std::ssize(messages(SIGNAL_MESSAGE)),
              PageOutbox::most_unanswered + PageOutbox::most_waiting + 100);
}

TEST_F(Transport, answers_each_call_of_a_page_for_which_signals_are_dropped)
{
    open();
    connect_to("gdscriptSignalEmitted");
    settle();
    reads = false;
    received.clear();
    expect_message_matching(
        "the page does not process its messages fast enough. The oldest signals are dropped");
    constexpr int count = 12'000;
    for (int i = 1; i <= count; ++i) {
        died->func_emit_signal(died, {ValueStd(i)}, {INT});
        post_echo(i, i);
    }
    serve_all_events();
    reads = true;
    page.post({{"type", IDLE}});
    ASSERT_TRUE(serve_until([&] { return messages(RESPONSE).size() == size_t(count); }));
    for (int i = 1; const QJsonObject& answer : messages(RESPONSE))
        ASSERT_EQ(answer["data"], i++);
    EXPECT_LT(messages(SIGNAL_MESSAGE).size(), size_t(count));
}

TEST_F(Transport, drops_the_oldest_answers_for_a_page_that_calls_and_hangs)
{
    open();
    reads = false;
    received.clear();
    expect_message_matching(
        "the page does not process its messages fast enough. The oldest answers are dropped");
    const QString text(1024 * 1024, 'x');
    constexpr int count = 200;
    for (int i = 1; i <= count; ++i)
        post_echo(i, text);
    serve_all_events();
    reads = true;
    page.post({{"type", IDLE}});
    ASSERT_TRUE(serve_until([&] { return answer_to(count); }));
    EXPECT_LE(std::ssize(messages(RESPONSE)) * text.size(),
              PageOutbox::largest_unanswered + PageOutbox::largest_waiting + 2 * text.size());
}

TEST_F(Transport, keeps_the_order_of_delayed_messages)
{
    open();
    for (const char* const name : {"propChanged", "gdscriptSignalEmitted"})
        connect_to(name);
    settle();
    reads = false;
    for (int i = 0; i < 2 * PageOutbox::most_unanswered; ++i)
        died->func_emit_signal(died, {ValueStd(i)}, {INT});
    announce(1);
    died->func_emit_signal(died, {ValueStd("after")}, {STRING});
    announce(2);
    serve_events();
    reads = true;
    page.post({{"type", IDLE}});
    const auto last = [&](qsizetype back) {
        const auto all = messages(SIGNAL_MESSAGE);
        return all[all.size() - static_cast<size_t>(back)]["args"][2];
    };
    ASSERT_TRUE(
        serve_until([&] { return messages(SIGNAL_MESSAGE).size() > 2000 && last(1) == 2; }));
    EXPECT_EQ(last(2), QJsonArray{"after"});
    EXPECT_NE(last(3), 1) << "only the last value of a change";
    int previous = -1;
    for (const QJsonObject& message : messages(SIGNAL_MESSAGE)) {
        const QJsonValue number = message["args"][2][0];
        if (!number.isDouble())
            continue;
        EXPECT_EQ(number.toInt(), previous + 1);
        previous = number.toInt();
    }
    EXPECT_EQ(previous, 2 * PageOutbox::most_unanswered - 1);
}

TEST_F(Transport, keeps_only_the_final_state_of_objects_for_a_page_that_hangs)
{
    open();
    for (const char* const name :
         {"gdscriptSignalEmitted", "objectRegistered", "objectdeRegistered"})
        connect_to(name);
    settle();
    reads = false;
    for (int i = 0; i < 2 * PageOutbox::most_unanswered; ++i)
        died->func_emit_signal(died, {}, {});
    serve_events();
    received.clear();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(manager->registerObject("other", &other.record()));
        EXPECT_TRUE(manager->deregisterObject("other"));
        EXPECT_TRUE(manager->deregisterObject("player"));
        EXPECT_TRUE(manager->registerObject("player", &player.record()));
    }
    serve_events();
    reads = true;
    page.post({{"type", IDLE}});
    settle();
    std::vector<std::pair<int, QString>> heard;
    for (const QJsonObject& message : messages(SIGNAL_MESSAGE)) {
        const int number = message["signal"].toInt();
        if (message["object"] == "___cm" && number != signal_number("gdscriptSignalEmitted"))
            heard.emplace_back(number, message["args"][0].toString());
    }
    EXPECT_EQ(
        heard,
        (std::vector<std::pair<int, QString>>{{signal_number("objectdeRegistered"), "player"},
                                              {signal_number("objectRegistered"), "player"}}));
}

TEST_F(Transport, sends_related_messages_as_one_to_clients_that_accept_bundles)
{
    std::vector<QJsonObject> raw;
    FakeTransport second([&](const QJsonObject& message) { raw.push_back(message); });
    new PageTransport(&second, &channel, "WebView 0");
    second.post({{"type", INIT}, {"id", 1}, {"bundles", true}});
    second.post({{"type", CONNECT}, {"object", "___cm"}, {"signal", signal_number("propChanged")}});
    ASSERT_TRUE(serve_until([&] { return raw.size() == 1; }));
    serve_events();
    announce(5);
    ASSERT_TRUE(serve_until([&] { return raw.size() == 2; }));
    EXPECT_EQ(raw[1]["type"], BUNDLE);
    EXPECT_EQ(raw[1]["data"].toArray().size(), 2);
}

// --- If a message bypasses it

TEST_F(Transport, is_not_the_only_guard_of_published_objects)
{
    open();  // from now on the channel notices destroyed objects
    const QPointer<QObject> object = channel.registeredObjects().value("player.health");
    delete object;
    announce(5);
    serve_events();
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(manager->registerObject("player", &player.record()));
    delete published<DBAbstractContextObject>("player");
    EXPECT_EQ(manager->find("player"), &player.record());
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(manager->registerObject("player", &player.record()));
}

TEST_F(Transport, is_not_the_only_guard_against_references)
{
    auto* const property = published<DBPropertyInfo>("player.health");
    QObject object;
    const auto pointer = QVariant::fromValue(&object);
    for (const char* const name : {"name", "class_name", "hint_string"}) {
        const QVariant before = property->property(name);
        for (const QVariant& value :
             {pointer, QVariant(QVariantList{1, pointer}),
              QVariant(QVariantMap{{"deep", QVariantList{QVariantMap{{"a", pointer}}}}})}) {
            expect_message(
                "cannot set a text of property 'player.health' to a value that is not plain data.");
            property->setProperty(name, value);
            EXPECT_EQ(property->property(name), before);
        }
        const QVariantMap plain{{"a", QVariantList{1, "x", QVariant(), 2.5, true}}};
        property->setProperty(name, plain);
        EXPECT_EQ(property->property(name), plain);
    }
}

}  // namespace marlune::test
