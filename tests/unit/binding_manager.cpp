// The registry of the published objects of a view, and its place on the web channel.

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
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlListProperty>
#include <QSet>
#include <QWebChannel>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace marlune::test {

using namespace marlune::db;

namespace {

using enum VariantTypeStd;

/** A message of Qt for each object that is registered while a page is connected. */
constexpr auto late_object = "^Registered new object after initialization";

class Manager : public testing::Test {
protected:
    Manager()
    {
        have_application();
        channel = std::make_unique<QWebChannel>();
        channel->setPropertyUpdateInterval(-1);
        manager = std::make_unique<DataBindingContextManager>(channel.get(), &root);
        channel->registerObject("___cm", manager.get());
        QObject::connect(manager.get(), &DataBindingContextManager::objectRegistered,
                         [this](const QString& name) { told.push_back("+" + name.toStdString()); });
        QObject::connect(manager.get(), &DataBindingContextManager::objectdeRegistered,
                         [this](const QString& name) { told.push_back("-" + name.toStdString()); });
    }

    QSet<QString> ids() const
    {
        const auto keys = channel->registeredObjects().keys();
        return {keys.begin(), keys.end()};
    }

    bool add(const char* name, HostObject& object)
    {
        return manager->registerObject(name, &object.record());
    }

    QObject root;
    std::unique_ptr<QWebChannel> channel;
    std::unique_ptr<DataBindingContextManager> manager;
    std::vector<std::string> told;
    HostObject player{"player"};
};

void expect_occupied(const std::string& name)
{
    expect_message("cannot add context object '" + name
                   + "', already occupied by another object. Use a different name.");
}

}  // namespace

TEST_F(Manager, can_be_called_by_name_through_qt)
{
    bool done = false;
    EXPECT_TRUE(QMetaObject::invokeMethod(manager.get(), "registerObject", qReturnArg(done),
                                          std::string("player"), &player.record()));
    EXPECT_TRUE(done);
    EXPECT_TRUE(QMetaObject::invokeMethod(manager.get(), "deregisterObject", qReturnArg(done),
                                          std::string("player")));
    EXPECT_TRUE(done);
}

TEST_F(Manager, knows_its_view_s_root)
{
    EXPECT_EQ(manager->root(), &root);
}

TEST_F(Manager, publishes_an_object_with_its_members)
{
    player.property("health", INT, ValueStd(1));
    player.method("heal");
    player.signal("died");
    EXPECT_TRUE(add("player", player));
    EXPECT_EQ(ids(),
              (QSet<QString>{"___cm", "player", "player.health", "player.heal", "player.died"}));
    EXPECT_EQ(told, std::vector<std::string>{"+player"});
}

TEST_F(Manager, publishes_under_the_given_name_and_not_the_record_s)
{
    player.property("%2", INT, ValueStd(1));
    EXPECT_TRUE(add("some %1", player));
    EXPECT_EQ(ids(), (QSet<QString>{"___cm", "some %1", "some %1.%2"}));
    EXPECT_EQ(told, std::vector<std::string>{"+some %1"});
}

TEST_F(Manager, refuses_a_name_that_is_taken_and_keeps_the_first_object)
{
    HostObject other("other");
    EXPECT_TRUE(add("player", player));
    expect_occupied("player");
    EXPECT_FALSE(add("player", other));
    EXPECT_EQ(manager->find("player"), &player.record());
    EXPECT_EQ(told, std::vector<std::string>{"+player"});
}

TEST_F(Manager, refuses_names_that_are_taken_on_the_channel)
{
    HostObject other("other");
    player.method("heal");
    EXPECT_TRUE(add("player", player));
    for (const char* const name : {"___cm", "player.heal"}) {
        expect_occupied(name);
        EXPECT_FALSE(add(name, other));
    }
    EXPECT_EQ(channel->registeredObjects().value("___cm"), manager.get());
}

TEST_F(Manager, does_not_publish_a_member_in_the_place_of_another_object)
{
    HostObject first("a.b"), second("a");
    second.method("b");
    second.method("c");
    EXPECT_TRUE(add("a.b", first));
    expect_message("cannot publish a.b twice. Use names without points, or different ones.");
    EXPECT_TRUE(add("a", second));
    EXPECT_TRUE(qobject_cast<DBAbstractContextObject*>(channel->registeredObjects().value("a.b")));
    EXPECT_TRUE(manager->deregisterObject("a"));
    EXPECT_EQ(ids(), (QSet<QString>{"___cm", "a.b"}));
}

TEST_F(Manager, refuses_no_object_and_no_name)
{
    expect_message("cannot add context object 'player', it is null. Pass its record.");
    EXPECT_FALSE(manager->registerObject("player", nullptr));
    expect_message("cannot add context object '', its name is empty. Pass a name.");
    EXPECT_FALSE(add("", player));
    EXPECT_TRUE(told.empty());
}

TEST_F(Manager, accepts_names_of_any_kind)
{
    const std::vector<std::string> names = {"__proto__", "constructor", "größer 猫", "\"quoted\\",
                                            " "};
    for (const std::string& name : names) {
        HostObject odd("odd");
        odd.property("__proto__", INT, ValueStd(1));
        EXPECT_TRUE(add(name.c_str(), odd));
        EXPECT_EQ(manager->find(name), &odd.record());
        EXPECT_TRUE(ids().contains(QString::fromStdString(name)));
        EXPECT_TRUE(manager->deregisterObject(name));
    }
}

TEST_F(Manager, withdraws_an_object_with_its_members)
{
    player.property("health", INT, ValueStd(1));
    player.method("heal");
    EXPECT_TRUE(add("player", player));
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_EQ(ids(), QSet<QString>{"___cm"});
    EXPECT_EQ(told, (std::vector<std::string>{"+player", "-player"}));
}

TEST_F(Manager, deletes_a_withdrawn_object_once_none_of_its_calls_can_be_running)
{
    EXPECT_TRUE(add("player", player));
    const QPointer<QObject> object = channel->registeredObjects().value("player");
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(object);
    serve_events();
    EXPECT_FALSE(object);
}

TEST_F(Manager, refuses_to_withdraw_an_unknown_object)
{
    expect_message("cannot remove context object 'player', does not exist.");
    EXPECT_FALSE(manager->deregisterObject("player"));
    EXPECT_TRUE(add("player", player));
    EXPECT_TRUE(manager->deregisterObject("player"));
    expect_message("cannot remove context object 'player', does not exist.");
    EXPECT_FALSE(manager->deregisterObject("player"));
}

TEST_F(Manager, publishes_a_withdrawn_name_and_object_again)
{
    HostObject other("other");
    player.property("health", INT, ValueStd(1));
    for (HostObject* const object : {&player, &other, &player}) {
        EXPECT_TRUE(add("name", *object));
        EXPECT_EQ(manager->find("name"), &object->record());
        EXPECT_TRUE(manager->deregisterObject("name"));
    }
}

TEST_F(Manager, finds_the_record_that_the_host_has_published)
{
    EXPECT_EQ(manager->find("player"), nullptr);
    EXPECT_TRUE(add("player", player));
    EXPECT_EQ(manager->find("player"), &player.record());
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_EQ(manager->find("player"), nullptr);
}

TEST_F(Manager, finds_records_on_other_threads_while_they_are_published_and_withdrawn)
{
    HostObject steady("steady");
    EXPECT_TRUE(add("steady", steady));
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!done) {
                EXPECT_EQ(manager->find("steady"), &steady.record());
                const auto* const found = manager->find("player");
                EXPECT_TRUE(!found || found == &player.record());
            }
        });
    }
    for (int i = 0; i < 500; ++i) {
        EXPECT_TRUE(add("player", player));
        EXPECT_TRUE(manager->deregisterObject("player"));
        serve_events();
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(Manager, holds_no_lock_while_it_notifies)
{
    QObject::connect(manager.get(), &DataBindingContextManager::objectRegistered,
                     [this](const QString& name) {
                         std::thread([&] {
                             EXPECT_EQ(manager->find(name.toStdString()), &player.record());
                         }).join();
                         EXPECT_TRUE(manager->deregisterObject(name.toStdString()));
                     });
    EXPECT_TRUE(add("player", player));
    EXPECT_EQ(manager->find("player"), nullptr);
}

TEST_F(Manager, deletes_all_its_objects_with_itself)
{
    player.method("heal");
    EXPECT_TRUE(add("player", player));
    const QPointer<QObject> object = channel->registeredObjects().value("player");
    manager.reset();
    EXPECT_FALSE(object);
    EXPECT_TRUE(ids().isEmpty());
}

TEST_F(Manager, works_after_its_channel_is_destroyed)
{
    EXPECT_TRUE(add("player", player));
    channel.reset();
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(add("player", player));
    manager.reset();
}

TEST_F(Manager, moves_its_objects_to_the_channel_of_the_next_scene)
{
    PropertyInfoStd& both = player.property("both", INT, ValueStd(1));
    player.method("both");
    player.method("heal");
    EXPECT_TRUE(add("player", player));
    channel = std::make_unique<QWebChannel>();
    manager->move_to(channel.get(), nullptr);
    EXPECT_EQ(manager->root(), nullptr);
    EXPECT_EQ(ids(), (QSet<QString>{"player", "player.both", "player.heal"}));
    EXPECT_TRUE(qobject_cast<DBPropertyInfo*>(channel->registeredObjects().value("player.both")));
    EXPECT_EQ(manager->find("player"), &player.record());

    int changes = 0;
    QObject::connect(manager.get(), &DataBindingContextManager::propChanged, [&] { ++changes; });
    both.func_valueChanged_updateQt(&both);
    serve_events();
    EXPECT_EQ(changes, 1) << "the host's callbacks still work";
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(ids().isEmpty());
}

TEST_F(Manager, registers_its_classes_with_qml_as_uncreatable)
{
    DataBindingContextManager::register_types();
    DataBindingContextManager::register_types();
    QQmlEngine engine;
    for (const QByteArray name : {"DBAbstractContextObject", "DBMethodInfo", "DBPropertyInfo"}) {
        QQmlComponent component(&engine);
        component.setData("import com.libopal." + name + " 1.0\n" + name + " {}", {});
        EXPECT_TRUE(component.isError());
        EXPECT_TRUE(component.errorString().contains("Cannot create")) << name.toStdString();
        EXPECT_TRUE(QMetaType::fromName("marlune::db::" + name + "*").isValid());
        EXPECT_TRUE(QMetaType::fromName("QQmlListProperty<marlune::db::" + name + ">").isValid());
    }
}

TEST_F(Manager, gives_pages_no_way_to_publish_or_withdraw)
{
    EXPECT_TRUE(add("player", player));
    std::vector<QJsonObject> answers;
    FakeTransport page([&](const QJsonObject& answer) { answers.push_back(answer); });
    channel->connectTo(&page);
    page.post({{"type", 3}, {"id", 0}});
    ASSERT_TRUE(serve_until([&] { return answers.size() == 1; }));
    const QByteArray description = QJsonDocument(answers[0]).toJson();
    EXPECT_TRUE(description.contains("objectRegistered"));
    EXPECT_FALSE(description.contains("registerObject")) << "the channel describes it to pages";

    const QMetaObject& meta = DataBindingContextManager::staticMetaObject;
    const auto call = [&](const QJsonValue& method, const QJsonArray& arguments) {
        page.post(
            {{"type", 6}, {"id", 1}, {"object", "___cm"}, {"method", method}, {"args", arguments}});
    };
    allow_messages_matching("^(Cannot invoke|No candidates found)");
    for (const char* const name : {"registerObject", "deregisterObject"}) {
        const QByteArray method = name;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).name() != method)
                continue;
            for (const QJsonArray& arguments :
                 {QJsonArray{"player", "player"}, QJsonArray{"player"}, {}}) {
                call(name, arguments);
                call(i, arguments);
            }
        }
    }
    EXPECT_TRUE(serve_until([&] { return answers.size() == 13; }));
    EXPECT_EQ(ids(), (QSet<QString>{"___cm", "player"}));
    EXPECT_EQ(told, std::vector<std::string>{"+player"});
}

TEST_F(Manager, survives_calls_with_arguments_of_every_kind)
{
    int calls = 0;
    player.method("f", {{INT, "a"}}, [&](auto...) {
        ++calls;
        return ValueStd(1);
    });
    EXPECT_TRUE(add("player", player));
    size_t answers = 0;
    FakeTransport page([&](const QJsonObject&) { ++answers; });
    channel->connectTo(&page);
    const std::vector<QJsonValue> values = {QJsonValue::Null,
                                            5,
                                            1.5,
                                            true,
                                            "text",
                                            QJsonArray{},
                                            QJsonArray{1, 2},
                                            QJsonObject{},
                                            QJsonObject{{"a", QJsonArray{1}}},
                                            QJsonObject{{"id", "player"}}};
    allow_messages_matching("^No candidates found");
    allow_messages_matching("^Ignoring additional arguments");
    allow_messages_matching("^invoke_method: .*doesn't exist");
    allow_messages_matching("^method call error:");
    size_t sent = 0;
    const auto call = [&](const QJsonValue& method, const QJsonArray& arguments) {
        page.post({{"type", 6},
                   {"id", 1},
                   {"object", "player"},
                   {"method", method},
                   {"args", arguments}});
        ++sent;
    };
    // Also calls by number and by signature, which the page script never makes.
    const QMetaObject& meta = DBAbstractContextObject::staticMetaObject;
    allow_messages_matching("^Cannot invoke non-public method");
    for (const QJsonValue& value : values) {
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            call(i, {"f", value});
            call(i, {value, value});
            call(QString::fromLatin1(meta.method(i).methodSignature()), {value, value});
        }
        call("___invoke_method", {value});
        call("get_method_signature", {value});
        for (const QJsonValue& other : values)
            call("___invoke_method", {value, other});
        call("___invoke_method", {"f", value});
    }
    EXPECT_TRUE(serve_until([&] { return answers == sent; }));
    EXPECT_EQ(calls, 0);
}

TEST_F(Manager, keeps_pages_from_calling_a_withdrawn_object)
{
    int calls = 0, answers = 0;
    player.property("health", INT, ValueStd(1));
    player.method("heal", {}, [&](auto...) {
        ++calls;
        return ValueStd(1);
    });
    EXPECT_TRUE(add("player", player));
    FakeTransport page([&](const QJsonObject&) { ++answers; });
    channel->connectTo(&page);
    page.post({{"type", 3}, {"id", 1}});
    EXPECT_TRUE(serve_until([&] { return answers == 1; }));
    const auto heal = [&](int id) {
        page.post({{"type", 6},
                   {"id", id},
                   {"object", "player"},
                   {"method", "___invoke_method"},
                   {"args", QJsonArray{"heal", QJsonArray()}}});
    };
    heal(2);
    EXPECT_TRUE(serve_until([&] { return calls == 1 && answers == 2; }));

    EXPECT_TRUE(manager->deregisterObject("player"));
    allow_messages_matching("^Unknown object encountered");
    heal(3);
    page.post({{"type", 9}, {"object", "player.health"}, {"property", 4}, {"value", 5}});
    serve_events();
    EXPECT_EQ(calls, 1);
    allow_messages_matching(late_object);
    EXPECT_TRUE(add("player", player));
    heal(4);
    EXPECT_TRUE(serve_until([&] { return calls == 2; }))
        << "an object that is published again can be called again";
}

}  // namespace marlune::test
