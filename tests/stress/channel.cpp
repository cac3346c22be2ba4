// Pages send random messages to the channel, while objects are published, withdrawn and changed.
// support/fuzz.h describes how to repeat a run.

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/page_transport.h"
#include "binding/property_info.h"
#include "support/fuzz.h"
#include "support/qt_loop.h"
#include "support/web/fake_transport.h"
#include "support/web/host_object.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QStringList>
#include <QWebChannel>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

namespace marlune::test {

using namespace db;
using enum VariantTypeStd;

namespace {

constexpr uint64_t least_messages = 10'000;
constexpr auto object_names = {"player", "enemy", "level", "a.b"};

class ChannelFuzz : public Fuzz {
protected:
    ChannelFuzz()
    {
        soak_seconds = 3600;
        have_application();
        channel.setPropertyUpdateInterval(-1);
        manager = std::make_unique<DataBindingContextManager>(&channel, nullptr);
        channel.registerObject("___cm", manager.get());
        for (const char* const name : object_names)
            add_object(name);
        open_page();
    }

    void add_object(const std::string& name)
    {
        auto object = std::make_unique<HostObject>(name);
        for (const VariantTypeStd code : {INT, STRING, VECTOR2, DICTIONARY, ARRAY, UNKNOWN}) {
            object->property("p" + std::to_string(static_cast<int>(code)), code, ValueStd("[]"))
                .func_valueChanged_updateGodot = [this](PropertyInfoStd*) { act_as_host(); };
        }
        object->method(
            "f", {{UNKNOWN, "a"}},
            [this](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
                act_as_host();
                return values.at(0);
            },
            STRING);
        object->method("g");
        object->signal("s");
        objects.push_back(std::move(object));
    }

    /** Another page: the previous one closes its end of the connection. */
    void open_page()
    {
        page = std::make_unique<FakeTransport>([this](const QJsonObject& message) {
            QJsonArray messages = message["data"].toArray();  // of a bundle
            messages.append(message);
            answered = answered || std::ranges::any_of(messages, [](const QJsonValue& part) {
                           return part["id"] == "are you there";
                       });
            if (!dice.one_in(50))
                page->post({{"type", 4}});
        });
        new PageTransport(page.get(), &channel, "WebView 0");
    }

    void act_as_host()
    {
        HostObject& object = *objects[dice.below(objects.size())];
        AbstractContextObjectStd& record = object.record();
        switch (dice.below(8)) {
        case 0:
            manager->registerObject(record.name, &record);
            break;
        case 1:
            manager->deregisterObject(record.name);
            break;
        case 2:
        case 3:
            announce(any_property(record));
            break;
        case 4:
            if (const auto& emit_signal = record.methods["s"]->func_emit_signal)
                emit_signal(record.methods["s"], {ValueStd("[1]")}, {ARRAY});
            break;
        default:
            break;
        }
    }

    static void announce(const PropertyInfoStd& property)
    {
        if (property.func_valueChanged_updateQt)
            property.func_valueChanged_updateQt(&property);
    }

    PropertyInfoStd& any_property(AbstractContextObjectStd& record)
    {
        auto property = record.properties.begin();
        std::advance(property, static_cast<std::ptrdiff_t>(dice.below(record.properties.size())));
        return *property->second;
    }

    QString any_name()
    {
        static const QStringList names = {"___cm",
                                          "___gate",
                                          "player",
                                          "player.f",
                                          "player.s",
                                          "player.p3",
                                          "player.p28",
                                          "enemy",
                                          "enemy.g",
                                          "enemy.p5",
                                          "level",
                                          "a.b",
                                          "a.b.p29",
                                          "unknown",
                                          "",
                                          "__proto__",
                                          "___invoke_method",
                                          "get_method_signature",
                                          "deleteLater",
                                          "deleteLater()",
                                          "NOPSignal",
                                          "registerObject",
                                          "deregisterObject",
                                          "propChanged",
                                          "objectNameChanged",
                                          "destroyed",
                                          "destroyed(QObject*)",
                                          "f",
                                          "g",
                                          "s",
                                          "value",
                                          "objectName",
                                          "___invoke_method(QVariant,QVariantList)",
                                          QString(5000, 'x')};
        return dice.one_of(names);
    }

    QJsonValue any_value(int depth = 0)
    {
        switch (dice.below(depth < 4 ? 11 : 7)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return static_cast<int>(dice.below(24)) - 2;
        case 2:
            return dice.one_in(2);
        case 3:
            return static_cast<double>(dice.any()) * (dice.one_in(2) ? 1e300 : -0.5);
        case 4:
        case 5:
            return any_name();
        case 6:
            return QJsonObject{{"__QObject*__", true}, {"id", any_name()}};
        case 7:
        case 8:
            return any_list(depth);
        default: {
            QJsonObject object;
            for (uint64_t left = dice.below(4); left > 0; --left)
                object[any_name()] = any_value(depth + 1);
            return object;
        }
        }
    }

    QJsonArray any_list(int depth = 0)
    {
        QJsonArray list;
        for (uint64_t left = dice.below(4); left > 0; --left)
            list.append(any_value(depth + 1));
        return list;
    }

    /** Often nearly right, because such messages get furthest. */
    QJsonObject any_message()
    {
        QJsonObject message;
        message["type"] = dice.one_in(20) ? any_value() : static_cast<int>(dice.below(13)) - 1;
        for (const char* const key : {"object", "method"}) {
            if (!dice.one_in(20))
                message[key] = dice.one_in(8) ? any_value() : any_name();
        }
        for (const char* const key : {"id", "signal", "property", "data", "value", "bundles"}) {
            if (!dice.one_in(5))
                message[key] = any_value();
        }
        if (dice.one_in(2))
            message["method"] = "___invoke_method";
        message["args"] = dice.one_in(2) ? QJsonArray{any_name(), any_list()} : any_list();
        if (dice.one_in(4))
            message["property"] = 4;
        if (dice.one_in(4))
            message["objects"] = any_list();
        return message;
    }

    /** All published objects are as the host has published them. */
    void check()
    {
        const QHash<QString, QObject*> published = channel.registeredObjects();
        for (const std::string& name : manager->names()) {
            const QString id = QString::fromStdString(name);
            ASSERT_EQ(published.value(id), static_cast<QObject*>(manager->object(name))) << name;
            ASSERT_EQ(published.value(id)->objectName(), id);
        }
        for (auto entry = published.begin(); entry != published.end(); ++entry) {
            const auto* const property = qobject_cast<DBPropertyInfo*>(entry.value());
            if (!property)
                continue;
            ASSERT_EQ(property->name().toString(), property->key());
            ASSERT_EQ(property->class_name(), QVariant(QString()));
            ASSERT_EQ(property->hint_string(), QVariant(QString()));
            ASSERT_EQ(property->objectName(), QString());
        }
    }

    void expect_answer()
    {
        answered = false;
        page->post({{"type", 3},
                    {"id", "are you there"},
                    {"bundles", true},
                    {"objects", QJsonArray{"___cm"}}});
        EXPECT_TRUE(serve_until([&] { return answered; }))
            << "the library no longer serves the page";
    }

    std::vector<std::unique_ptr<HostObject>> objects;
    QWebChannel channel;
    std::unique_ptr<DataBindingContextManager> manager;
    std::unique_ptr<FakeTransport> page;
    bool answered = false;
};

TEST_F(ChannelFuzz, of_messages_while_objects_come_and_go)
{
    const MessageCounter counter;
    repeat(
        [&] {
            page->post(any_message());
            act_as_host();
            if (dice.one_in(3))
                serve_events();
            check();
            if (dice.one_in(200))
                expect_answer();
            if (dice.one_in(500))
                open_page();
        },
        least_messages);
    expect_answer();
}

}  // namespace

}  // namespace marlune::test
