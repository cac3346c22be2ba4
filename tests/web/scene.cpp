// How the scene of a web view applies the view's settings, checked inside the library.

#include "runtime/context.h"
#include "support/library.h"
#include "support/message_log.h"
#include "support/qt_thread.h"
#include "support/web/host_web_view.h"
#include "support/web/http_server.h"
#include "web/url_interceptor.h"
#include "web/web_view.h"

#include <marlune/marlune.h>

#include <QGuiApplication>
#include <QJSValue>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWebEngineProfile>
#include <QQuickWindow>
#include <QWebChannel>
#include <QWebEngineUrlRequestInfo>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace marlune::test {

namespace {

QQuickItem* find_page(QQuickItem* item)
{
    if (item->inherits("QQuickWebEngineView"))
        return item;
    for (QQuickItem* const child : item->childItems()) {
        if (QQuickItem* const page = find_page(child))
            return page;
    }
    return nullptr;
}

/** The engine's view in the only scene; null before the scene has one. */
QQuickItem* the_page()
{
    for (QWindow* const window : QGuiApplication::allWindows()) {
        if (auto* const scene = qobject_cast<QQuickWindow*>(window)) {
            if (QQuickItem* const page = find_page(scene->contentItem()))
                return page;
        }
    }
    return nullptr;
}

/** The root of that page's scene. */
QQuickItem* the_root()
{
    return the_page()->window()->contentItem()->childItems().constFirst();
}

using Settings = std::map<std::string, std::string>;

/** The names of a setting: in the facade's members, and as the engine's property. */
struct Names {
    const char* member;
    const char* engine;
};

// The engine has the view's names, with one exception.
#define NAMES(type, name, own_property, initial, constness) {#name, #own_property},
constexpr Names SAME_NAMES[] = {MARLUNE_WEB_SETTINGS(NAMES)};
#undef NAMES

const char* engine_name(const Names& names)
{
    const bool differs = std::string_view(names.engine) == "fullscreenSupportEnabled";
    return differs ? "fullScreenSupportEnabled" : names.engine;
}

std::string as_text(const QVariant& value)
{
    const bool is_enumeration = value.metaType().flags() & QMetaType::IsEnumeration;
    return (is_enumeration ? QString::number(value.toInt()) : value.toString()).toStdString();
}

/** All of the engine's settings, under the names of the facade's members. */
Settings settings_of_the_engine()
{
    return on_qt_thread([] {
        Settings result;
        const auto* const settings = the_page()->property("settings").value<QObject*>();
        for (const Names& names : SAME_NAMES) {
            const QVariant value = settings->property(engine_name(names));
            result[names.member] = value.isValid() ? as_text(value) : "missing";
        }
        return result;
    });
}

std::string as_text(const std::string& value)
{
    return value;
}

Settings settings_of(MWebView& view)
{
    Settings result;
#define COLLECT(type, name, property, initial, constness) \
    result[#name] = as_text(view.get_##name());
    MARLUNE_WEB_SETTINGS(COLLECT)
#undef COLLECT
    return result;
}

bool other(bool value)
{
    return !value;
}

int other(int)
{
    return 1;
}

std::string other(const std::string&)
{
    return "utf-8";
}

void change_all_settings(MWebView& view)
{
#define CHANGE(type, name, property, initial, constness) view.set_##name(other(view.get_##name()));
    MARLUNE_WEB_SETTINGS(CHANGE)
#undef CHANGE
}

/** Lists the differences alone, because most settings are equal. */
void expect_of_the_engine(Settings expected)
{
    // The scene itself refuses what the policies 0 and 1 refuse, after the host's handler.
    if (expected["unknown_url_scheme_policy"] != "2")
        expected["unknown_url_scheme_policy"] = "3";
    Settings actual = settings_of_the_engine();
    for (const auto& [name, value] : expected)
        EXPECT_EQ(actual[name], value) << name;
}

class WebScene : public testing::Test {
protected:
    HostWebView view;
};

}  // namespace

TEST_F(WebScene, gives_the_engine_all_settings_that_were_set_before)
{
    change_all_settings(view.facade());
    ASSERT_TRUE(view.open("about:blank"));
    expect_of_the_engine(settings_of(view.facade()));
}

TEST_F(WebScene, gives_the_engine_all_settings_that_are_set_later)
{
    ASSERT_TRUE(view.open("about:blank"));
    change_all_settings(view.facade());
    expect_of_the_engine(settings_of(view.facade()));
}

TEST_F(WebScene, gives_the_engine_the_defaults)
{
    ASSERT_TRUE(view.open("about:blank"));
    Settings expected = settings_of(view.facade());
    // The engine's own default where the view names none.
    expected["default_text_encoding"] = "ISO-8859-1";
    expect_of_the_engine(expected);
}

TEST_F(WebScene, has_a_channel_that_looks_for_no_changes)
{
    ASSERT_TRUE(view.open("about:blank"));
    const auto [interval, publishes_manager] = on_qt_thread([] {
        auto* const channel = the_root()->property("webChannel").value<QWebChannel*>();
        return std::tuple(channel->propertyUpdateInterval(),
                          channel->registeredObjects().contains(QStringLiteral("___cm")));
    });
    EXPECT_EQ(interval, -1);
    EXPECT_TRUE(publishes_manager);
}

TEST_F(WebScene, leads_the_page_to_a_channel_without_objects_of_the_host)
{
    ASSERT_TRUE(view.open("about:blank"));
    const auto [same, objects] = on_qt_thread([] {
        auto* const channel = the_root()->property("webChannel").value<QWebChannel*>();
        auto* const of_the_page = the_page()->property("webChannel").value<QWebChannel*>();
        return std::tuple(of_the_page == channel, of_the_page->registeredObjects().size());
    });
    EXPECT_FALSE(same);
    EXPECT_EQ(objects, 1) << "the channel must hold the gate alone";
}

TEST_F(WebScene, has_the_shared_profile)
{
    ASSERT_TRUE(view.open("about:blank"));
    EXPECT_EQ(on_qt_thread([] {
                  return the_page()->property("profile").value<QObject*>()->property("storageName");
              }),
              QStringLiteral("Default"));
}

TEST_F(WebScene, knows_the_view_as_a_property_of_its_context)
{
    ASSERT_TRUE(view.open("about:blank"));
    EXPECT_TRUE(on_qt_thread([] {
        QQmlContext* const context = qmlContext(the_root());
        return context->contextProperty(QStringLiteral("ctx")).value<WebView*>() != nullptr
            && context->contextProperty(QStringLiteral("customWebProfile")).value<QObject*>();
    }));
}

TEST_F(WebScene, keeps_the_last_calls_alone_while_there_is_no_page)
{
    ASSERT_TRUE(view.open("about:blank"));
    on_qt_thread([] { return the_root()->setProperty("started", false); });
    for (int i = 0; i < 1100; ++i)
        view->run_javascript("1");
    const auto waiting = [] {
        return on_qt_thread([] {
            return the_root()->property("waiting").value<QJSValue>().property("length").toInt();
        });
    };
    EXPECT_EQ(waiting(), 1000);

    expect_message_matching("the web engine renders on the GPU");
    on_qt_thread([] { return QMetaObject::invokeMethod(the_root(), "decide", Q_ARG(bool, true)); });
    view->run_javascript("1");
    EXPECT_EQ(waiting(), 0) << "calls wait for a page that can never be drawn";
}

TEST_F(WebScene, names_the_host_that_asks_for_a_password_and_not_the_user_in_its_address)
{
    HttpServer server;
    server.serve("/", behind_password("ann", "s3cret", {.body = "in"}));
    ASSERT_TRUE(view.open("about:blank"));
    std::string address = server.url("/");
    address.insert(address.find("127"), "bank.example%2Flogin@");
    view->set_url(address);
    const auto message = [] {
        return on_qt_thread([] {
            for (QQuickItem* const item : the_root()->findChildren<QQuickItem*>()) {
                if (item->property("server").isValid())
                    return item->property("message").toString().toStdString();
            }
            return std::string();
        });
    };
    ASSERT_TRUE(view.draw_until([&] { return !message().empty(); }));
    EXPECT_EQ(message(),
              "http://127.0.0.1:" + std::to_string(server.port())
                  + " asks for a name and a password.");
}

TEST(GodotUrlInterceptor, can_be_made_by_a_scene)
{
    start_library();
    M::ensure_qt_eventloop_is_running();
    EXPECT_EQ(on_qt_thread([] {
                  QQmlEngine engine;
                  QQmlComponent component(&engine);
                  component.setData("import Web\nGodotURLInterceptor {}", QUrl());
                  const std::unique_ptr<QObject> made(component.create());
                  return qobject_cast<GodotURLInterceptor*>(made.get()) ? QString()
                                                                        : component.errorString();
              }),
              QString());
}

namespace {

class CountingInterceptor : public GodotURLInterceptor {
public:
    void interceptRequest(QWebEngineUrlRequestInfo& info) override
    {
        types.insert(info.resourceType());
        GodotURLInterceptor::interceptRequest(info);
    }

    std::set<int> types;
};

}  // namespace

TEST(GodotUrlInterceptor, lets_requests_of_every_type_through)
{
    HttpServer server;
    server.serve("/", html(R"(<link rel=stylesheet href=style><link rel=icon href=icon>
        <link rel=prefetch href=prefetch><script src=script></script><img src=image>
        <iframe src=frame></iframe><video src=media></video><object data=object></object>
        <style>@font-face { font-family: f; src: url(font) }</style>
        <p style='font-family: f'>text<script>
        fetch("xhr"); new Worker("worker"); new SharedWorker("shared_worker");
        navigator.serviceWorker.register("service_worker").catch(() => 0);
        navigator.sendBeacon("ping");</script>)"));
    HostWebView view;
    ASSERT_TRUE(view.open("about:blank"));
    std::optional<CountingInterceptor> interceptor;
    const auto install = [](GodotURLInterceptor* one) {
        return on_qt_thread([one] {
            auto* const profile = the_page()->property("profile").value<QQuickWebEngineProfile*>();
            profile->setUrlRequestInterceptor(one);
            return profile != nullptr;
        });
    };
    ASSERT_TRUE(on_qt_thread([&] { return bool(interceptor.emplace().metaObject()); }));
    ASSERT_TRUE(install(&*interceptor));
    EXPECT_TRUE(view.go_to(server.url("/")));
    for (const char* const path :
         {"/style", "/icon", "/prefetch", "/script", "/image", "/frame", "/media", "/object",
          "/font", "/xhr", "/worker", "/shared_worker", "/service_worker", "/ping"})
        EXPECT_TRUE(view.draw_until([&] { return !server.requests(path).empty(); })) << path;
    ASSERT_TRUE(install(nullptr));
    EXPECT_GT(on_qt_thread([&] {
                  const size_t count = interceptor->types.size();
                  interceptor.reset();
                  return count;
              }),
              10u)
        << "not every type of request reached the interceptor";
}

}  // namespace marlune::test
