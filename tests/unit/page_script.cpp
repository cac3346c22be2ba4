// The page script, in a script engine that stands for the page, on a real channel with a real
// manager.

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/page_transport.h"
#include "binding/property_info.h"
#include "support/message_log.h"
#include "support/qt_loop.h"
#include "support/web/fake_transport.h"
#include "support/web/host_object.h"

#include <QFile>
#include <QJSEngine>
#include <QStringList>
#include <QWebChannel>

#include <gtest/gtest.h>

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

/**
 * The globals that the script finds in a page: a window, a console, and the transport of the
 * channel.
 */
constexpr auto page_globals = R"(
    var self = this, window = this;
    var events = [];
    function Event(type) { this.type = type; }
    window.dispatchEvent = event => events.push(event.type);
    var console = {
        error: (...texts) => page.log("error: " + texts.join(" ")),
        warn: (...texts) => page.log("warning: " + texts.join(" ")),
    };
    function reportError(error) { page.fail(String(error)); }
    var qt = {webChannelTransport: {send: text => page.send(text), onmessage: null}};
    function deliver(text) { qt.webChannelTransport.onmessage({data: text}); }
    var log = [];
)";

QString script_text()
{
    QFile file(QStringLiteral(":/Web/assets/test.min.js"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

using Texts = std::vector<std::string>;

/** A page that has loaded the script. */
class Page : public QObject {
    Q_OBJECT

public:
    explicit Page(QWebChannel& channel, const QString& script = script_text())
        : script_(script), transport_([this](const QJsonObject& message) { receive(message); })
    {
        engine_.globalObject().setProperty("page", engine_.newQObject(this));
        QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
        run(page_globals);
        new PageTransport(&transport_, &channel, "WebView 0");
        run(script);
    }

    /** Drops all messages from now on, like a page that hangs. */
    void hang() { hangs_ = true; }

    /** Starts as the next page on the same connection. */
    void load_again()
    {
        hangs_ = false;
        run(page_globals);
        run(script_);
    }

    /** Runs a script and returns its result as text; an exception goes to errors(). */
    std::string run(const QString& script)
    {
        const QJSValue result = engine_.evaluate(script);
        if (result.isError())
            errors_.push_back(result.toString().toStdString());
        return result.toString().toStdString();
    }

    /** Runs a script and returns its result as JSON. */
    std::string json(const QString& script) { return run("JSON.stringify(" + script + ")"); }

    bool is_ready() { return run("events.join()") == "godot.ready"; }

    /** The exceptions that scripts have thrown into the event loop, and failed promises. */
    Texts& errors() { return errors_; }
    /** The messages that scripts have written to the console. */
    Texts& console() { return console_; }
    int descriptions_asked_for() const { return descriptions_asked_for_; }
    qsizetype characters_received() const { return characters_received_; }

    Q_INVOKABLE void send(const QString& text)
    {
        const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
        if (message["type"] == 3)
            ++descriptions_asked_for_;
        transport_.post(message);
    }

    Q_INVOKABLE void fail(const QString& text) { errors_.push_back(text.toStdString()); }

    Q_INVOKABLE void log(const QString& text) { console_.push_back(text.toStdString()); }

private:
    void receive(const QJsonObject& message)
    {
        const auto text = QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact));
        characters_received_ += text.size();
        if (hangs_)
            return;
        const QJSValue result = engine_.globalObject().property("deliver").call({text});
        if (result.isError())
            errors_.push_back(result.toString().toStdString());
    }

    QString script_;
    QJSEngine engine_;
    FakeTransport transport_;
    Texts errors_, console_;
    int descriptions_asked_for_ = 0;
    qsizetype characters_received_ = 0;
    bool hangs_ = false;
};

class PageScript : public testing::Test {
protected:
    PageScript()
    {
        have_application();
        // A message of Qt for each object that is registered while a page is connected.
        allow_messages_matching("^Registered new object after initialization");
        channel.setPropertyUpdateInterval(-1);
        manager = std::make_unique<DataBindingContextManager>(&channel, nullptr);
        channel.registerObject("___cm", manager.get());
        player.property("health", INT, ValueStd(100)).func_valueChanged_updateGodot =
            [](PropertyInfoStd*) {};
        player.signal("died", {{STRING, "why"}, {INT, "when"}});
        player.method(
            "add", {{INT, "a"}, {INT, "b"}},
            [this](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
                ++calls;
                const auto number = [&](size_t i) {
                    return std::get<double>(std::get<ValueStd>(values[i]));
                };
                return ValueStd(number(0) + number(1));
            },
            FLOAT);
    }

    void TearDown() override
    {
        if (page) {
            EXPECT_EQ(page->errors(), Texts());
        }
    }

    bool add(const std::string& name, HostObject& object)
    {
        return manager->registerObject(name, &object.record());
    }

    void open_page()
    {
        page = std::make_unique<Page>(channel);
        if (!serve_until([&] { return page->is_ready(); }))
            throw std::runtime_error("the page does not become ready");
    }

    bool comes(const QString& condition)
    {
        return serve_until([&] { return page->run(condition) == "true"; });
    }

    /** Waits until the pending messages have arrived. */
    void settle()
    {
        page->run("var settled = false;"
                  "___godot_channel.exec({type: 3}, () => { settled = true; })");
        EXPECT_TRUE(comes("settled"));
    }

    HostObject player{"player"};
    QWebChannel channel;
    std::unique_ptr<DataBindingContextManager> manager;
    std::unique_ptr<Page> page;
    int calls = 0;
};

}  // namespace

// --- The start

TEST_F(PageScript, leaves_a_page_without_a_channel_alone)
{
    QJSEngine engine;
    const QString script = script_text();
    EXPECT_FALSE(engine.evaluate(script).isError());
    EXPECT_TRUE(
        engine.evaluate("$g === null && godot === null && ___godot_channel === null").toBool());
    engine.evaluate("var qt = {}");
    EXPECT_FALSE(engine.evaluate(script).isError());
}

TEST_F(PageScript, declares_three_globals_that_are_null_until_the_channel_is_ready)
{
    page = std::make_unique<Page>(channel);
    EXPECT_EQ(page->json("[$g, godot, ___godot_channel]"), "[null,null,null]");
    EXPECT_EQ(page->json("Object.keys(self).filter(name => name.startsWith('___godot_'))"),
              R"(["___godot_channel"])");
    EXPECT_TRUE(serve_until([&] { return page->is_ready(); }));
    EXPECT_EQ(page->json("$g !== null && $g === godot"), "true");
    EXPECT_EQ(page->json("___godot_channel instanceof QWebChannel"), "true");
}

TEST_F(PageScript, adds_no_other_names_to_the_page_than_its_own_and_the_channel_s)
{
    QJSEngine engine;
    const QString before = engine.evaluate("Object.keys(this).join()").toString();
    engine.evaluate(script_text());
    QStringList names = engine.evaluate("Object.keys(this).join()").toString().split(',');
    for (const QString& name : before.split(','))
        names.removeAll(name);
    names.sort();
    EXPECT_EQ(names,
              (QStringList{"$g", "QObject", "QWebChannel", "QWebChannelMessageTypes",
                           "___godot_channel", "godot"}));
}

TEST_F(PageScript, is_ready_without_any_object)
{
    open_page();
    EXPECT_EQ(page->json("Object.keys($g)"), "[]");
    EXPECT_EQ(page->json("events"), R"(["godot.ready"])");
}

TEST_F(PageScript, has_the_objects_that_are_already_published_and_only_those)
{
    HostObject other("other"), hidden("a.b");
    QObject stranger;
    channel.registerObject("stranger", &stranger);
    ASSERT_TRUE(add("player", player) && add("other", other) && add("a.b", hidden));
    open_page();
    EXPECT_EQ(page->json("Object.keys($g).sort()"), R"(["other","player"])");
    channel.deregisterObject(&stranger);
}

TEST_F(PageScript, serves_two_pages_one_after_the_other)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    page.reset();
    open_page();
    EXPECT_EQ(page->json("$g.player.health.value"), "100");
}

TEST_F(PageScript, ignores_answers_to_requests_of_the_page_before)
{
    ASSERT_TRUE(add("player", player));
    page = std::make_unique<Page>(channel);
    // A channel that counts from 0 would use small numbers.
    for (int number = 0; number < 4; ++number)
        page->run(QStringLiteral("deliver('{\"type\":10,\"id\":%1,\"data\":{}}')").arg(number));
    ASSERT_TRUE(serve_until([&] { return page->is_ready(); }));
    page->run("$g.player.add(1, 2).then(result => log.push(result))");
    for (int number = 0; number < 9; ++number)
        page->run(QStringLiteral("deliver('{\"type\":10,\"id\":%1,\"data\":9}')").arg(number));
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(page->json("log"), "[3]");
}

TEST_F(PageScript, misses_no_change_that_happens_while_it_starts)
{
    HostObject late("late"), gone("gone");
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player) && add("gone", gone));
    page = std::make_unique<Page>(channel);
    ASSERT_TRUE(serve_until([&] { return page->descriptions_asked_for() == 3; }));
    // The page now has a description that is about to become obsolete.
    health.value = ValueStd(7);
    health.func_valueChanged_updateQt(&health);
    EXPECT_TRUE(manager->deregisterObject("gone"));
    EXPECT_TRUE(add("late", late));
    ASSERT_TRUE(serve_until([&] { return page->is_ready(); }));
    EXPECT_TRUE(comes("$g.late !== undefined"));
    EXPECT_EQ(page->json("Object.keys($g).sort()"), R"(["late","player"])");
    EXPECT_EQ(page->json("$g.player.health.value"), "7");
}

TEST_F(PageScript, starts_after_a_page_that_has_read_no_messages)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->hang();
    for (int i = 1; i <= 5000; ++i) {
        health.value = ValueStd(i);
        health.func_valueChanged_updateQt(&health);
    }
    serve_events();
    serve_events();
    page->load_again();
    ASSERT_TRUE(serve_until([&] { return page->is_ready(); }));
    EXPECT_EQ(page->json("$g.player.health.value"), "5000");
    health.value = ValueStd(1);
    health.func_valueChanged_updateQt(&health);
    EXPECT_TRUE(comes("$g.player.health.value === 1"));
}

// --- Methods

TEST_F(PageScript, calls_methods_and_gets_their_results)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.add(1, 2.5).then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(page->json("log"), "[3.5]");
}

TEST_F(PageScript, gets_null_from_a_method_without_a_result)
{
    player.method("nothing", {}, [](auto...) { return ValueStd(1); });
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.nothing().then(result => log.push(result), () => log.push('failed'))");
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(page->json("log"), "[null]");
}

TEST_F(PageScript, passes_values_of_all_kinds_both_ways)
{
    std::vector<ContainerStd> given;
    player.method(
        "take", {{STRING, "a"}, {UNKNOWN, "b"}, {ARRAY, "c"}, {VECTOR2, "d"}},
        [&](MethodInfoStd*, std::vector<ContainerStd> values, auto) {
            given = std::move(values);
            return ValueStd(R"({"list":[1,"zwölf",null],"map":{"a":{}}})");
        },
        DICTIONARY);
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.take('größer 🐈', {a: {b: 1}}, [1, [2]], [1.5, 2.5])"
              ".then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(given,
              (std::vector<ContainerStd>{ValueStd("größer 🐈"), ValueStd(R"({"a":{"b":1}})"),
                                         ValueStd("[1,[2]]"), ValueStd(Vector2Std{1.5, 2.5})}));
    EXPECT_EQ(page->json("log[0].list"), R"([1,"zwölf",null])");
}

TEST_F(PageScript, removes_a_callback_at_the_end_of_the_arguments_and_never_calls_it)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.add(1, 2, () => log.push('called')).then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length > 0"));
    settle();
    EXPECT_EQ(page->json("log"), "[3]");
}

TEST_F(PageScript, refuses_a_call_with_a_wrong_number_of_arguments)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    const QString text = "[player] function call 'add' requires 2 parameter(s), but 1 provided";
    page->run("try { $g.player.add(1) } catch (error) { log.push(error.message, String(error)) }");
    EXPECT_EQ(page->json("log"), QString("[\"%1\",\"%1\"]").arg(text).toStdString());
    EXPECT_TRUE(serve_until([&] { return !page->console().empty(); }));
    EXPECT_EQ(page->console(),
              Texts{"error: " + text.toStdString() + "\n    signature: add(a: INT,b: INT)"});
    EXPECT_EQ(calls, 0);
}

TEST_F(PageScript, counts_arguments_without_the_callback)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("try { $g.player.add(1, () => {}) } catch (error) { log.push(String(error)) }");
    page->run("try { $g.player.add(1, 2, 3) } catch (error) { log.push(String(error)) }");
    EXPECT_EQ(page->json("log.map(text => text.replace(/.*requires/, ''))"),
              R"([" 2 parameter(s), but 1 provided"," 2 parameter(s), but 3 provided"])");
    EXPECT_TRUE(serve_until([&] { return page->console().size() == 2; }));
    EXPECT_EQ(calls, 0);
}

TEST_F(PageScript, describes_its_methods)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    EXPECT_EQ(
        page->json("[$g.player.add.object_name, $g.player.add.is_method, $g.player.add.is_signal,"
                   " $g.player.add.return_type, Object.keys($g.player.add.args)]"),
        R"(["player.add",true,false,4,["a","b"]])");
    EXPECT_EQ(page->json("Object.keys($g.player.add).includes('connect')"), "false");
}

// --- Signals

TEST_F(PageScript, calls_every_callback_that_is_connected_to_a_signal)
{
    MethodInfoStd& died = *player.record().methods["died"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.died.connect((...values) => log.push(['first', ...values]));"
              "$g.player.died.connect(why => log.push(['second', why]))");
    std::thread([&] {
        died.func_emit_signal(&died, {ValueStd("fell"), ValueStd(12)}, {STRING, INT});
    }).join();
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log"), R"([["first","fell",12],["second","fell"]])");
}

TEST_F(PageScript, survives_a_signal_without_a_connection)
{
    MethodInfoStd& died = *player.record().methods["died"];
    ASSERT_TRUE(add("player", player));
    open_page();
    died.func_emit_signal(&died, {}, {});
    settle();
}

TEST_F(PageScript, calls_the_other_callbacks_when_one_fails)
{
    MethodInfoStd& died = *player.record().methods["died"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.died.connect(() => { throw new Error('mine') });"
              "$g.player.died.connect(() => log.push('called'))");
    died.func_emit_signal(&died, {}, {});
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(std::exchange(page->errors(), {}), Texts{"Error: mine"});
}

TEST_F(PageScript, warns_when_a_signal_is_called)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    expect_message("invoke_method: died was not a method");
    page->run("$g.player.died('why', 1).then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length === 1"));
}

// --- Properties

TEST_F(PageScript, reads_and_writes_properties)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    EXPECT_EQ(page->json("$g.player.health.value"), "100");
    EXPECT_EQ(page->json("$g.player.health.description"), R"({"name":"health","type":3})");
    EXPECT_EQ(page->json("$g.player.health.name"), R"("health")");
    page->run("$g.player.health.value = 50");
    EXPECT_EQ(page->json("$g.player.health.value"), "50");
    EXPECT_TRUE(serve_until([&] { return health.value == ContainerStd(ValueStd(50)); }));
}

TEST_F(PageScript, reports_changes_and_has_the_new_value)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("const note = value => log.push([value, $g.player.health.value]);"
              "$g.player.health.on('changed', note); $g.player.health.on('changed', note);"
              "$g.player.health.on('other', note)");
    health.value = ValueStd(20);
    health.func_valueChanged_updateQt(&health);
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log"), "[[20,20],[20,20]]");
}

TEST_F(PageScript, has_the_last_value_whether_page_or_host_wrote_it)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    const auto announce = [&](int value) {
        health.value = ValueStd(value);
        health.func_valueChanged_updateQt(&health);
        return comes(QString("$g.player.health.value === %1").arg(value));
    };
    EXPECT_TRUE(announce(20));
    page->run("$g.player.health.value = 30");
    EXPECT_EQ(page->json("$g.player.health.value"), "30");
    settle();
    EXPECT_EQ(page->json("$g.player.health.value"), "30");
    EXPECT_TRUE(announce(40));
}

TEST_F(PageScript, keeps_its_last_write_while_answers_to_earlier_ones_arrive)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.health.value += 1");
    while (health.value != ContainerStd(ValueStd(101)))
        serve_events();
    page->run("$g.player.health.value += 1");  // before the answer to the first one
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(page->json("$g.player.health.value"), "102");
        serve_events();
    }
    page->run("$g.player.health.value += 1");
    settle();
    EXPECT_EQ(page->json("$g.player.health.value"), "103");
    EXPECT_EQ(health.value, ContainerStd(ValueStd(103)));
}

TEST_F(PageScript, has_the_value_to_which_the_host_changes_its_write)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.health.value = 1.5");
    EXPECT_EQ(page->json("$g.player.health.value"), "1.5");
    settle();
    EXPECT_EQ(page->json("$g.player.health.value"), "2") << "the property is an integer";

    health.func_valueChanged_updateGodot = [](PropertyInfoStd* property) {
        property->value = ValueStd(7);
        property->func_valueChanged_updateQt(property);
    };
    page->run("$g.player.health.value = 50; $g.player.health.value = 51");
    settle();
    settle();
    EXPECT_EQ(page->json("$g.player.health.value"), "7");
}

TEST_F(PageScript, sees_a_write_of_a_scene_after_an_announcement_of_the_host)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    health.value = ValueStd(20);
    health.func_valueChanged_updateQt(&health);
    ASSERT_TRUE(comes("$g.player.health.value === 20"));
    manager->object("player")->find_property("health")->set_value(30);
    EXPECT_TRUE(comes("$g.player.health.value === 30"));
    EXPECT_EQ(page->json("___godot_channel.objects['player.health'].value"), "30");
}

TEST_F(PageScript, accepts_keys_of_any_name_in_the_host_s_data)
{
    const std::string text = R"({"__QObject*__":true,"__proto__":{"a":1},"deep":[)"
                             R"({"__QObject*__":true,"data":{},"id":"x"}],"id":"player"})";
    PropertyInfoStd& bag = player.property("bag", DICTIONARY, ValueStd(text));
    player.property("list", ARRAY, ValueStd("[" + text + "]"));
    player.method(
        "bag_now", {}, [&](auto...) { return ValueStd(text); }, DICTIONARY);
    MethodInfoStd& died = *player.record().methods["died"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.bag_now().then(bag => log.push(bag));"
              "$g.player.bag.on('changed', bag => log.push(bag));"
              "$g.player.died.connect(bag => log.push(bag))");
    EXPECT_EQ(page->json("$g.player.bag.value"), text);
    EXPECT_EQ(page->json("$g.player.list.value"), "[" + text + "]");
    EXPECT_TRUE(comes("log.length === 1"));
    bag.func_valueChanged_updateQt(&bag);
    died.func_emit_signal(&died, {ValueStd(text)}, {DICTIONARY});
    EXPECT_TRUE(comes("log.length === 3"));
    EXPECT_EQ(page->json("log"), "[" + text + "," + text + "," + text + "]");
    EXPECT_EQ(page->json("$g.player.bag.value"), text);

    HostObject late("late");
    late.property("bag", DICTIONARY, ValueStd(text));
    ASSERT_TRUE(add("late", late));
    EXPECT_TRUE(comes("'late' in $g"));
    EXPECT_EQ(page->json("$g.late.bag.value"), text);
}

TEST_F(PageScript, accepts_no_undefined_value)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.player.health.value = undefined");
    settle();
    EXPECT_EQ(page->json("$g.player.health.value"), "100");
    EXPECT_EQ(health.value, ContainerStd(ValueStd(100)));
    EXPECT_EQ(std::exchange(page->console(), {}).size(), 1);
}

// --- Publishing and withdrawing

TEST_F(PageScript, gets_an_object_that_is_published_later)
{
    open_page();
    page->run("$g.objectRegistered('player', name => log.push([name, $g[name].health.value]))");
    ASSERT_TRUE(add("player", player));
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(page->json("log"), R"([["player",100]])");
    page->run("$g.player.health.value = 50; $g.player.add(1, 2).then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log[1]"), "3");
    EXPECT_EQ(player.record().properties["health"]->value, ContainerStd(ValueStd(50)));
}

TEST_F(PageScript, gets_many_objects_that_are_published_together_with_one_request)
{
    open_page();
    std::vector<std::unique_ptr<HostObject>> objects;
    for (int i = 0; i < 20; ++i) {
        const std::string name = "object" + std::to_string(i);
        page->run(QString("$g.objectRegistered('%1', name => log.push(name))").arg(name.c_str()));
        objects.push_back(std::make_unique<HostObject>(name));
        objects.back()->property("p", INT, ValueStd(i));
    }
    const int asked_before = page->descriptions_asked_for();
    for (const auto& object : objects)
        ASSERT_TRUE(add(object->record().name, *object));
    EXPECT_TRUE(comes("log.length === 20"));
    EXPECT_EQ(page->json("Object.keys($g).length"), "20");
    EXPECT_EQ(page->json("$g.object13.p.value"), "13");
    EXPECT_LE(page->descriptions_asked_for() - asked_before, 2);
}

TEST_F(PageScript, gets_all_new_objects_also_when_a_listener_fails)
{
    HostObject a("a"), b("b");
    open_page();
    page->run("$g.objectRegistered('a', () => { throw new Error('mine') });"
              "$g.objectRegistered('b', () => log.push('b'))");
    ASSERT_TRUE(add("a", a) && add("b", b));
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(std::exchange(page->errors(), {}), Texts{"Error: mine"});
}

TEST_F(PageScript, loses_an_object_that_is_withdrawn)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.objectRemoved('player', name => log.push([name, name in $g]));"
              "$g.objectRemoved('player', name => log.push(name))");
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log"), R"([["player",false],"player"])");
    EXPECT_EQ(page->json("Object.keys(___godot_channel.objects)"), R"(["___cm"])");
}

TEST_F(PageScript, fails_to_report_a_removed_object_without_a_listener)
{
    ASSERT_TRUE(add("player", player));
    open_page();
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(comes("!('player' in $g)"));
    ASSERT_EQ(page->errors().size(), 1);
    EXPECT_TRUE(std::exchange(page->errors(), {})[0].starts_with("TypeError"));
}

TEST_F(PageScript, has_the_new_object_under_a_name_that_is_published_again)
{
    HostObject other("player");
    other.property("mana", INT, ValueStd(5));
    ASSERT_TRUE(add("player", player));
    open_page();
    page->run("$g.objectRegistered('player', () => log.push(Object.keys($g.player)));"
              "$g.objectRemoved('player', () => log.push('removed'))");
    EXPECT_TRUE(manager->deregisterObject("player"));
    ASSERT_TRUE(add("player", other));
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log"), R"(["removed",["mana"]])");
    PropertyInfoStd& mana = *other.record().properties["mana"];
    mana.value = ValueStd(6);
    mana.func_valueChanged_updateQt(&mana);
    EXPECT_TRUE(comes("$g.player.mana.value === 6"));
}

TEST_F(PageScript, keeps_up_with_an_object_that_is_published_and_withdrawn_quickly)
{
    HostObject other("player");
    other.property("mana", INT, ValueStd(5));
    open_page();
    page->run("$g.objectRemoved('player', () => log.push('removed'));"
              "$g.objectRegistered('player', () => log.push(Object.keys($g.player)))");
    ASSERT_TRUE(add("player", player));
    EXPECT_TRUE(manager->deregisterObject("player"));
    ASSERT_TRUE(add("player", other));
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log"), R"(["removed",["mana"]])");
    settle();
    EXPECT_TRUE(manager->deregisterObject("player"));
    ASSERT_TRUE(add("player", player));
    EXPECT_TRUE(manager->deregisterObject("player"));
    EXPECT_TRUE(comes("log.length === 4"));
    settle();
    EXPECT_EQ(page->json("'player' in $g"), "false");
}

TEST_F(PageScript, logs_a_change_or_a_signal_of_an_unknown_object)
{
    HostObject other("inner");
    PropertyInfoStd& property = other.property("p", INT, ValueStd(1));
    MethodInfoStd& signal = other.signal("s");
    ASSERT_TRUE(add("outer", other));
    open_page();
    property.func_valueChanged_updateQt(&property);
    signal.func_emit_signal(&signal, {}, {});
    EXPECT_TRUE(serve_until([&] { return page->errors().size() == 2; }));
    for (const std::string& error : std::exchange(page->errors(), {}))
        EXPECT_EQ(error, "no such object name inner");
}

TEST_F(PageScript, is_notified_of_new_objects_only)
{
    std::vector<std::unique_ptr<HostObject>> objects;
    open_page();
    const auto add_one = [&] {
        const std::string name = "object" + std::to_string(objects.size());
        objects.push_back(std::make_unique<HostObject>(name));
        objects.back()->property("p", INT, ValueStd(1));
        ASSERT_TRUE(add(name, *objects.back()));
        ASSERT_TRUE(comes(QString("'%1' in $g").arg(name.c_str())));
    };
    add_one();
    const qsizetype before = page->characters_received();
    add_one();
    const qsizetype for_second = page->characters_received() - before;
    for (int i = 0; i < 20; ++i)
        add_one();
    EXPECT_LE(page->characters_received() - before, 21 * for_second + 1000);
}

// --- Names

TEST_F(PageScript, accepts_objects_of_any_name)
{
    const std::vector<std::string> names = {"__proto__", "constructor", "toString",
                                            "größer 猫", "\"quoted\\",  "objectRegistered",
                                            " ",         "'",           "___godot_channel"};
    std::vector<std::unique_ptr<HostObject>> objects;
    for (const std::string& name : names) {
        objects.push_back(std::make_unique<HostObject>(name));
        objects.back()->property("p", STRING, ValueStd(name));
        objects.back()->method(
            "f", {}, [](auto...) { return ValueStd(1); }, INT);
        objects.back()->signal("s");
        ASSERT_TRUE(add(name, *objects.back()));
    }
    open_page();
    EXPECT_EQ(page->json("Object.keys($g).length"), std::to_string(names.size()));
    EXPECT_EQ(page->json("Object.keys($g).every(name => $g[name].p.value === name)"), "true");
    EXPECT_EQ(page->json("[{}.p, Object.prototype.p, Object.keys(Object.prototype)]"),
              "[null,null,[]]");
    page->run("for (const name of Object.keys($g)) $g[name].s.connect(() => log.push(name))");
    for (const auto& object : objects) {
        MethodInfoStd& signal = *object->record().methods["s"];
        signal.func_emit_signal(&signal, {}, {});
    }
    EXPECT_TRUE(comes(QString("log.length === %1").arg(names.size())));
    HostObject late("late");
    ASSERT_TRUE(add("late", late));
    EXPECT_TRUE(comes("'late' in $g"));
}

TEST_F(PageScript, accepts_members_of_any_name_but_a_few)
{
    HostObject odd("odd");
    for (const char* const name :
         {"constructor", "größer 猫", "\"q\\", "", "a.b", "value", "on", "then"})
        odd.property(name, STRING, ValueStd(name)).func_valueChanged_updateGodot =
            [](PropertyInfoStd*) {};
    for (const char* const name : {"toString", "valueOf", "connect"})
        odd.method(
            name, {}, [](auto...) { return ValueStd(1); }, INT);
    for (const char* const name : {"name", "call", "hasOwnProperty", "indexOf", "__proto__"})
        odd.property(name, STRING, ValueStd(name));
    ASSERT_TRUE(add("odd", odd));
    open_page();
    EXPECT_EQ(page->json("Object.keys($g.odd).length"), "11");
    EXPECT_EQ(page->json("['name', 'call', 'indexOf'].some(name => name in $g.odd)"), "false");
    EXPECT_EQ(page->json("['constructor', 'größer 猫', '\"q\\\\', '', 'a.b', 'value', 'on', 'then']"
                         ".every(name => $g.odd[name].value === name)"),
              "true");
    EXPECT_EQ(page->json("Object.keys(Object.prototype)"), "[]");
    page->run(
        "$g.odd.constructor.value = 'new'; $g.odd.toString().then(result => log.push(result))");
    EXPECT_TRUE(comes("log.length === 1"));
    EXPECT_EQ(odd.record().properties["constructor"]->value, ContainerStd(ValueStd("new")));
}

// --- Qt's own client, without the library's script

class QtClient : public PageScript {
protected:
    void open_client()
    {
        QFile file(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        page = std::make_unique<Page>(channel, QString::fromUtf8(file.readAll()));
        page->run("var channel = null;"
                  "new QWebChannel(qt.webChannelTransport, opened => { channel = opened; })");
        ASSERT_TRUE(comes("channel !== null"));
    }

    /** Waits until the pending messages have arrived. */
    void settle_client()
    {
        page->run("var settled = false; channel.exec({type: 3}, () => { settled = true; })");
        EXPECT_TRUE(comes("settled"));
    }
};

TEST_F(QtClient, finds_the_manager_and_the_published_objects)
{
    ASSERT_TRUE(add("player", player));
    open_client();
    EXPECT_EQ(page->json("Object.keys(channel.objects).sort()"),
              R"(["___cm","player","player.add","player.died","player.health"])");
    EXPECT_EQ(page->json("Object.keys(channel.objects.player.methodsMap).sort()"),
              R"(["add","died"])");
    EXPECT_EQ(page->json("channel.objects.player.variablesMap.health.value"), "100");
    EXPECT_EQ(page->json("'isContextObject' in channel.objects.player"), "true");
}

TEST_F(QtClient, calls_methods)
{
    ASSERT_TRUE(add("player", player));
    open_client();
    page->run("const object = channel.objects.player;"
              "object.___invoke_method('add', [1, 2]).then(result => log.push(result));"
              "object.get_method_signature('add', signature => log.push(signature))");
    EXPECT_TRUE(comes("log.length === 2"));
    EXPECT_EQ(page->json("log.map(String).sort()"), R"x(["3","add(a: INT,b: INT)"])x");
}

TEST_F(QtClient, writes_properties_and_is_notified_of_changes_and_signals)
{
    PropertyInfoStd& health = *player.record().properties["health"];
    MethodInfoStd& died = *player.record().methods["died"];
    HostObject other("other");
    ASSERT_TRUE(add("player", player));
    open_client();
    page->run("for (const name of ['propChanged', 'gdscriptSignalEmitted', 'objectRegistered',"
              " 'objectdeRegistered']) channel.objects.___cm[name].connect((...values) =>"
              " log.push(values.join()));"
              "var property = channel.objects['player.health'];"
              "property.NOPSignal.connect(() => log.push('property ' + property.value))");
    settle_client();
    page->run("property.value = 50");
    EXPECT_TRUE(serve_until([&] { return health.value == ContainerStd(ValueStd(50)); }));
    EXPECT_TRUE(comes("log.length === 1"));
    health.value = ValueStd(60);
    health.func_valueChanged_updateQt(&health);
    died.func_emit_signal(&died, {ValueStd("fell"), ValueStd(1)}, {STRING, INT});
    EXPECT_TRUE(comes("log.length === 4"));
    ASSERT_TRUE(add("other", other));
    EXPECT_TRUE(manager->deregisterObject("other"));
    EXPECT_TRUE(comes("log.length === 6"));
    EXPECT_EQ(page->json("log"),
              R"(["property 50","property 60","player,health,60","player,died,fell,1",)"
              R"("other","other"])");
}

TEST_F(QtClient, stays_connected_while_others_on_the_page_disconnect)
{
    MethodInfoStd& died = *player.record().methods["died"];
    ASSERT_TRUE(add("player", player));
    open_client();
    page->run("const hear = () => log.push('heard'), signal = channel.objects.___cm"
              ".gdscriptSignalEmitted;"
              "signal.connect(hear); signal.disconnect(hear);"
              "signal.connect(() => log.push('other'))");
    settle_client();
    died.func_emit_signal(&died, {}, {});
    EXPECT_TRUE(comes("log.length > 0"));
    EXPECT_EQ(page->json("log"), R"(["other"])");
}

}  // namespace marlune::test

#include "page_script.moc"
