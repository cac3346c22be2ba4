// The view behind a web view's facade, without its scene: its properties for QML, its defaults, and
// its reactions to calls of the scene.

#include "web/web_view.h"
#include "support/fill_slot.h"
#include "support/message_log.h"
#include "support/qt_loop.h"
#include "web/page_watch.h"
#include "web/url_interceptor.h"

#include "marlune/mweb_view.h"

#include <QMetaMethod>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace marlune::test {

namespace {

constexpr auto DEFAULT_USER_AGENT =
    "Mozilla/5.0 (X11; U; Linux x86_64) AppleWebKit/537.36 (KHTML, like Gecko) Ubuntu "
    "Chromium/124.0.6310.208 Chrome/122.0.6310.208 Safari/537.36";

/** A row of the settings, repeated here, because the list itself is under test. */
struct Setting {
    const char* property;
    QVariant initial;
};

const std::vector<Setting> SETTINGS = {
    {"accelerated2dCanvasEnabled", true},
    {"allowGeolocationOnInsecureOrigins", true},
    {"allowRunningInsecureContent", true},
    {"allowWindowActivationFromJavaScript", true},
    {"autoLoadIconsForPage", true},
    {"autoLoadImages", true},
    {"defaultTextEncoding", QString()},
    {"dnsPrefetchEnabled", false},
    {"errorPageEnabled", false},
    {"focusOnNavigationEnabled", true},
    {"forceDarkMode", false},
    {"fullscreenSupportEnabled", false},
    {"hyperlinkAuditingEnabled", false},
    {"javascriptCanAccessClipboard", false},
    {"javascriptCanOpenWindows", true},
    {"javascriptCanPaste", false},
    {"javascriptEnabled", true},
    {"linksIncludedInFocusChain", true},
    {"localContentCanAccessFileUrls", true},
    {"localContentCanAccessRemoteUrls", true},
    {"localStorageEnabled", true},
    {"navigateOnDropEnabled", true},
    {"pdfViewerEnabled", true},
    {"playbackRequiresUserGesture", false},
    {"pluginsEnabled", false},
    {"printElementBackgrounds", true},
    {"readingFromCanvasEnabled", true},
    {"screenCaptureEnabled", false},
    {"showScrollBars", false},
    {"spatialNavigationEnabled", false},
    {"touchIconsEnabled", false},
    {"unknownUrlSchemePolicy", 0},
    {"webGLEnabled", true},
    {"webRTCPublicInterfacesOnly", false},
};

const QMetaObject& meta()
{
    return WebView::staticMetaObject;
}

std::vector<QMetaProperty> own_properties()
{
    std::vector<QMetaProperty> result;
    for (int i = meta().propertyOffset(); i < meta().propertyCount(); ++i)
        result.push_back(meta().property(i));
    return result;
}

class WebViewObject : public testing::Test {
protected:
    WebViewObject() { have_application(); }

    int number_of_signals_of(const QMetaProperty& property, const QVariant& written)
    {
        QSignalSpy signal(&view, property.notifySignal());
        EXPECT_TRUE(property.write(&view, written)) << property.name();
        for (const QList<QVariant>& arguments : signal)
            EXPECT_EQ(arguments, QVariantList{written}) << property.name();
        return int(signal.size());
    }

    WebView view;
};

}  // namespace

TEST_F(WebViewObject, starts_with_its_defaults)
{
    EXPECT_EQ(view.property("url"), QStringLiteral("about:blank"));
    EXPECT_EQ(view.property("audio_muted"), false);
    EXPECT_EQ(view.property("zoom_factor"), 2.0);
    EXPECT_EQ(view.property("backgroundColor"), QStringLiteral("transparent"));
    EXPECT_EQ(view.user_agent(), QLatin1StringView(DEFAULT_USER_AGENT));
    for (const auto& [property, initial] : SETTINGS)
        EXPECT_EQ(view.property(property), initial) << property;
}

TEST_F(WebViewObject, counts_the_views_of_the_process)
{
    const int first = view.property("idx").toInt();
    const WebView second, third;
    EXPECT_EQ(second.idx(), first + 1);
    EXPECT_EQ(third.idx(), first + 2);
}

TEST_F(WebViewObject, accepts_another_number_without_a_signal)
{
    QSet<QByteArray> emitted;
    std::vector<std::unique_ptr<QSignalSpy>> spies;
    for (int i = meta().methodOffset(); i < meta().methodCount(); ++i) {
        if (meta().method(i).methodType() == QMetaMethod::Signal)
            spies.push_back(std::make_unique<QSignalSpy>(&view, meta().method(i)));
    }
    ASSERT_TRUE(view.setProperty("idx", 1234));
    EXPECT_EQ(view.property("idx"), 1234);
    for (const auto& spy : spies)
        EXPECT_EQ(spy->size(), 0) << spy->signal().constData();
    EXPECT_EQ(WebView().idx() < 1234, true) << "that number does not affect the count of views";
}

TEST_F(WebViewObject, keeps_written_values_and_notifies_even_when_they_are_equal)
{
    for (const QMetaProperty& property : own_properties()) {
        if (!property.hasNotifySignal() || !property.isWritable())
            continue;
        const QVariant initial = property.read(&view);
        const QVariant other = initial.typeId() == QMetaType::Bool ? QVariant(!initial.toBool())
            : initial.typeId() == QMetaType::QString ? QVariant(QStringLiteral("about:\u00e4"))
            : initial.typeId() == QMetaType::Int     ? QVariant(-77)
                                                     : QVariant(1.5);
        EXPECT_EQ(number_of_signals_of(property, initial), 1) << property.name();
        EXPECT_EQ(number_of_signals_of(property, other), 1) << property.name();
        EXPECT_EQ(property.read(&view), other) << property.name();
        EXPECT_EQ(number_of_signals_of(property, other), 1) << property.name();
    }
}

TEST_F(WebViewObject, allows_every_navigation_without_a_handler)
{
    EXPECT_TRUE(view.navigation_handler(QStringLiteral("https://a.example/"),
                                        QStringLiteral("link_clicked")));
    fill(view.navigation_callback(), [](std::string, std::string) { return false; });
    fill(view.navigation_callback(), {});
    EXPECT_TRUE(view.navigation_handler(QString(), QString()));
}

TEST_F(WebViewObject, asks_the_navigation_handler)
{
    std::vector<std::pair<std::string, std::string>> asked;
    fill(view.navigation_callback(), [&](std::string url, std::string type) {
        asked.emplace_back(url, type);
        return url != "res://b/";
    });
    EXPECT_TRUE(view.navigation_handler(QStringLiteral("res://\u00e4\U0001f30a/"),
                                        QStringLiteral("typed")));
    EXPECT_FALSE(view.navigation_handler(QStringLiteral("res://b/"), QStringLiteral("other")));
    EXPECT_EQ(asked,
              (decltype(asked){{"res://\u00e4\U0001f30a/", "typed"}, {"res://b/", "other"}}));
}

TEST_F(WebViewObject, refuses_the_navigation_when_the_handler_throws)
{
    fill(view.navigation_callback(),
         [](std::string, std::string) -> bool { throw std::runtime_error("the host's trouble"); });
    expect_message_matching("^WebView \\d+: the host's trouble");
    EXPECT_FALSE(view.navigation_handler(QStringLiteral("res://a/"), QStringLiteral("other")));
    expect_message_matching("unknown exception");
    fill(view.navigation_callback(), [](std::string, std::string) -> bool { throw 1; });
    EXPECT_FALSE(view.navigation_handler(QStringLiteral("res://a/"), QStringLiteral("other")));
}

TEST_F(WebViewObject, reports_no_loading_without_a_callback)
{
    int told = 0;
    view.onLoadingChanged(2, QStringLiteral("res://a/"), QString(), QString(), 0);
    fill(view.loading_callback(),
         [&told](int, std::string, std::string, std::string, int) { ++told; });
    fill(view.loading_callback(), {});
    view.onLoadingChanged(2, QStringLiteral("res://a/"), QString(), QString(), 0);
    EXPECT_EQ(told, 0);
}

TEST_F(WebViewObject, reports_loading_as_the_scene_does)
{
    using Told = std::tuple<int, std::string, std::string, std::string, int>;
    std::vector<Told> told, replaced;
    const auto write_to = [](std::vector<Told>& list) {
        return [&list](int status, std::string url, std::string domain, std::string error,
                       int code) { list.emplace_back(status, url, domain, error, code); };
    };
    fill(view.loading_callback(), write_to(replaced));
    fill(view.loading_callback(), write_to(told));
    view.onLoadingChanged(3, QStringLiteral("res://\u00e4/"), QStringLiteral("dns"),
                          QStringLiteral("no \u20ac"), -105);
    view.onLoadingChanged(-1, QString(), QString(), QString(), 7);
    EXPECT_EQ(
        told,
        (std::vector<Told>{{3, "res://\u00e4/", "dns", "no \u20ac", -105}, {-1, "", "", "", 7}}));
    EXPECT_EQ(replaced, std::vector<Told>());
}

TEST_F(WebViewObject, survives_a_loading_callback_that_throws)
{
    fill(view.loading_callback(), [](int, std::string, std::string, std::string, int) {
        throw std::runtime_error("the host's trouble");
    });
    expect_message_matching("^WebView \\d+: the host's trouble");
    view.onLoadingChanged(0, QString(), QString(), QString(), 0);
}

TEST_F(WebViewObject, releases_its_callbacks_when_it_is_destroyed)
{
    const auto token = std::make_shared<int>();
    {
        WebView other;
        fill(other.navigation_callback(), [token](std::string, std::string) { return true; });
        fill(other.loading_callback(), [token](int, std::string, std::string, std::string, int) {});
        EXPECT_EQ(token.use_count(), 3);
    }
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(WebViewObject, loads_nothing_without_a_profile)
{
    try {
        view.load();
        FAIL() << "a library that has not been started has no profile";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to set web profile");
    }
}

TEST_F(WebViewObject, has_no_history_without_a_scene)
{
    EXPECT_FALSE(view.can_go_back());
    EXPECT_FALSE(view.can_go_forward());
    view.back();
    view.forward();
    view.back_or_forward(-3);
    view.reload();
    view.reload_and_bypass_cache();
    view.run_javascript(QStringLiteral("1"));
}

TEST_F(WebViewObject, warns_about_a_relative_url_and_keeps_it)
{
    expect_message_matching("\"hud/index.html\" is not an absolute URL");
    view.set_url(QStringLiteral("hud/index.html"));
    EXPECT_EQ(view.url(), u"hud/index.html");
    expect_message_matching("\"\" is not an absolute URL");
    view.set_url(QString());
    EXPECT_EQ(view.url(), QString());
}

// --- Pages that do not answer

namespace {

class Watch : public testing::Test {
protected:
    Watch()
    {
        have_application();
        QObject::connect(&watch, &PageWatch::asked, [this] {
            ++asked;
            if (answers)
                watch.answer();
        });
        QObject::connect(&watch, &PageWatch::hangingChanged,
                         [this](bool hanging) { said.push_back(hanging); });
        watch.set_active(true);
    }

    bool becomes(const std::vector<bool>& expected)
    {
        return QTest::qWaitFor([&] { return said == expected; });
    }

    int asked = 0;
    bool answers = false;
    std::vector<bool> said;
    PageWatch watch{nullptr, std::chrono::milliseconds(1)};
};

}  // namespace

TEST_F(Watch, finds_that_a_page_hangs_after_five_questions)
{
    ASSERT_TRUE(becomes({true}));
    EXPECT_TRUE(watch.is_hanging());
    EXPECT_EQ(asked, PageWatch::PATIENCE) << "a page that hangs is no longer asked";
    watch.answer();
    EXPECT_TRUE(becomes({true, false}));
    EXPECT_TRUE(becomes({true, false, true})) << "it may hang again";
}

TEST_F(Watch, does_not_report_a_page_that_answers)
{
    answers = true;
    ASSERT_TRUE(QTest::qWaitFor([&] { return asked > 3 * PageWatch::PATIENCE; }));
    EXPECT_EQ(said, std::vector<bool>());
}

TEST_F(Watch, starts_again_when_it_is_switched_on)
{
    ASSERT_TRUE(becomes({true}));
    watch.set_active(false);
    EXPECT_EQ(said, (std::vector<bool>{true, false}))
        << "a page that is not watched does not count as hanging";
    const int before = asked;
    watch.set_active(true);
    ASSERT_TRUE(becomes({true, false, true}));
    EXPECT_EQ(asked, before + PageWatch::PATIENCE);
}

TEST_F(Watch, never_ends_the_process_of_the_game)
{
    watch.end_process(QCoreApplication::applicationPid());
    EXPECT_EQ(said, std::vector<bool>()) << "this process is still running";
}

TEST(ZoomFactor, is_that_of_the_table_or_two)
{
    for (int percent = 25; percent <= 500; percent += 25)
        EXPECT_EQ(MWebView::_translate_zoom_factor(percent), percent / 100.0) << percent;
    for (const int percent :
         {0, 1, 24, 26, 30, 99, 110, 499, 501, 525, 600, -25, -100, INT_MAX, INT_MIN})
        EXPECT_EQ(MWebView::_translate_zoom_factor(percent), 2.0) << percent;
}

TEST(ResourceType, has_a_description)
{
    const char* const expected[] = {
        "ResourceTypeMainFrame = 0, // top level page",
        "ResourceTypeSubFrame, // frame or iframe",
        "ResourceTypeStylesheet, // a CSS stylesheet",
        "ResourceTypeScript, // an external script",
        "ResourceTypeImage, // an image (jpg/gif/png/etc)",
        "ResourceTypeFontResource, // a font",
        "ResourceTypeSubResource, // an other subresource.",
        "ResourceTypeObject, // an object (or embed) tag for a plugin,",
        "ResourceTypeMedia, // a media resource.",
        "ResourceTypeWorker, // the main resource of a dedicated worker.",
        "ResourceTypeSharedWorker, // the main resource of a shared worker.",
        "ResourceTypePrefetch, // an explicitly requested prefetch",
        "ResourceTypeFavicon, // a favicon",
        "ResourceTypeXhr, // a XMLHttpRequest",
        "ResourceTypePing, // a ping request for <a ping>",
        "ResourceTypeServiceWorker, // the main resource of a service worker.",
        "ResourceTypeUnknown",
    };
    int type = 0;
    for (const char* const description : expected)
        EXPECT_STREQ(describe_resource_type(type++), description);
}

TEST(ResourceType, is_unknown_outside_of_the_table)
{
    for (const int type : {-1, 17, 18, 19, 254, 255, INT_MAX, INT_MIN})
        EXPECT_STREQ(describe_resource_type(type), "Unknown type") << type;
}

}  // namespace marlune::test
