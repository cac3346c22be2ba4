// Hosts call a web view inside its own callbacks: every member in every callback.

#include "support/callback_sweep.h"
#include "support/message_log.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;
using namespace db;

using Web = MWebView;

HostObject& other_object()
{
    static HostObject object("other");
    return object;
}

std::vector<Member<Web>> members()
{
    return with_others<Web>(
        {
            {"load", [](Web& view) { view.load(); }},
            {"reset", [](Web& view) { view.reset(); }},
            {"destroy", [](Web& view) { view.destroy(); }},
            {"render", [](Web& view) { view.render(); }},
            {"set_url", [](Web& view) { view.set_url("res://pack/next.html"); }},
            {"load_html", [](Web& view) { view.load_html("<p>text", "res://pack/"); }},
            {"back", [](Web& view) { view.back(); }},
            {"reload", [](Web& view) { view.reload(); }},
            {"reload_and_bypass_cache", [](Web& view) { view.reload_and_bypass_cache(); }},
            {"set_otr", [](Web& view) { view.set_otr(false); }},
            {"webchannel_registerObject",
             [](Web& view) { view.webchannel_registerObject("other", &other_object().record()); }},
            {"webchannel_deregisterObject",
             [](Web& view) { view.webchannel_deregisterObject("player"); }},
        },
        [](Web& view) {
            Getters<&Web::get_url, &Web::can_go_back, &Web::can_go_forward,
                    &Web::get_javascript_enabled, &Web::get_background_color,
                    &Web::get_zoom_factor>::call(view);
            view.forward();
            view.back_or_forward(3);
            view.run_javascript("window.x = 1");
            view.set_func_navigation_handler({});
            view.set_func_loading_changed({});
            view.set_func_page_responding({});
            view.set_javascript_enabled(true);
            view.set_background_color("#ffffff");
            view.set_zoom_factor(100);
            view.set_user_agent(view.get_user_agent());
            view.set_storage_path("");
            view.set_cookie("a.example", "/", "a", "b", false, "", 0);
            view.set_disable_gpu(view.get_disable_gpu());
            view.webchannel_getObject("player");
        });
}

void go_to_next_page(HostWebView& view)
{
    view->set_url("res://pack/next.html");
}

/** All callbacks except the slow one. */
constexpr Occasion<HostWebView> OCCASIONS[] = {
    {"resource_file", go_to_next_page},
    {"navigation_handler", go_to_next_page},
    {"loading_started", go_to_next_page},
    {"loading_succeeded", go_to_next_page},
    {"loading_failed", [](HostWebView& view) { view->set_url("res://pack/missing.html"); }},
    {"javascript_console_log", [](HostWebView& view) { view.run("console.log('text')"); }},
    {"method", [](HostWebView& view) { view.run("$g.player.act()"); }},
    {"value_changed", [](HostWebView& view) { view.run("$g.player.points.value = 7"); }},
};

const char* name_of_status(int status)
{
    switch (status) {
    case Load::STARTED:
        return "loading_started";
    case Load::SUCCEEDED:
        return "loading_succeeded";
    case Load::FAILED:
        return "loading_failed";
    default:
        return "loading_stopped";
    }
}

using Caller = std::shared_ptr<CallerInCallback<Web>>;

void call_in_callbacks(const Caller& caller, const Web& view)
{
    view.set_func_navigation_handler([caller](const auto&...) {
        caller->on("navigation_handler");
        return true;
    });
    view.set_func_loading_changed(
        [caller](int status, const auto&...) { caller->on(name_of_status(status)); });
    view.set_func_page_responding([caller](bool) { caller->on("page_responding"); });
    view.set_func_javascript_console_log(
        [caller](const auto&...) { caller->on("javascript_console_log"); });
}

/** A published object whose callbacks call a view. */
class CallingPlayer : public HostObject {
public:
    explicit CallingPlayer(const Caller& caller) : HostObject("player")
    {
        method("act", {}, [caller](MethodInfoStd*, std::vector<ContainerStd>, auto) {
            caller->on("method");
            return ContainerStd();
        });
        property("points", VariantTypeStd::INT, ValueStd(3)).func_valueChanged_updateGodot =
            [caller](PropertyInfoStd*) { caller->on("value_changed"); };
    }
};

/** Serves the pages, and calls the view. */
ServingResources::Callback calling_pack(const Caller& caller)
{
    return [caller](const std::string& path, bool&, uint64_t& size) -> uint8_t* {
        static std::string page = "<!doctype html><title>page</title>";
        if (caller)
            caller->on("resource_file");
        size = path == "/missing.html" ? 0 : page.size();
        return reinterpret_cast<uint8_t*>(page.data());
    };
}

class CallsInWebCallbacks : public testing::TestWithParam<Member<Web>> {
protected:
    CallsInWebCallbacks()
    {
        // Qt writes it for each object that is published while a page is open.
        allow_messages_matching("^Registered new object after initialization");
        allow_messages_matching("a callback cannot load a scene");
    }

    testing::AssertionResult still_shows_pages(HostWebView& view)
    {
        if (std::string(GetParam().name) == "destroy") {
            HostWebView next;
            return next.open("res://pack/");
        }
        const auto shown = std::make_shared<std::atomic<bool>>(false);
        view->set_func_navigation_handler({});
        view->set_func_loading_changed([shown](int status, std::string url, const auto&...) {
            if (status == Load::SUCCEEDED && url == "res://pack/shown.html")
                *shown = true;
        });
        view->load();
        view->set_url("res://pack/shown.html");
        if (view.draw_until([&] { return shown->load(); }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << "the view is at " << view->get_url();
    }

    ServingResources pack{calling_pack({})};
};

INSTANTIATE_TEST_SUITE_P(Members, CallsInWebCallbacks, testing::ValuesIn(members()), name_of<Web>);

TEST_P(CallsInWebCallbacks, leave_a_view_that_shows_pages)
{
    for (const auto& [callback, provoke] : OCCASIONS) {
        SCOPED_TRACE(std::string(GetParam().name) + " in " + callback);
        // The records outlive the view.
        std::optional<CallingPlayer> player;
        HostWebView view;
        const auto caller =
            std::make_shared<CallerInCallback<Web>>(view.facade(), callback, GetParam());
        player.emplace(caller);
        view->webchannel_registerObject("player", &player->record());
        ASSERT_TRUE(view.open("res://pack/"));
        ASSERT_TRUE(
            view.draw_until([&] { return view.evaluate("$g?.player?.points.value") == "3"; }));
        call_in_callbacks(caller, view.facade());
        pack.serve(calling_pack(caller));
        provoke(view);
        ASSERT_TRUE(view.draw_until([&] { return caller->has_called(); }));
        pack.serve(calling_pack({}));

        EXPECT_TRUE(still_shows_pages(view));
    }
}

TEST(CallsWhileAPageHangs, leave_views_that_show_pages)
{
    allow_messages_matching("^Registered new object after initialization");
    allow_messages_matching("a callback cannot load a scene");
    allow_messages_matching("the page does not respond and was ended");
    expect_message("cannot remove context object 'player', does not exist.");
    const ServingResources pack(calling_pack({}));
    struct Hanging {
        explicit Hanging(const Member<Web>& member)
            : caller(
                std::make_shared<CallerInCallback<Web>>(view.facade(), "page_responding", member))
        {
        }

        HostWebView view;
        Caller caller;
    };
    // All at once, because the engine takes seconds to report a page as hanging. The exception is
    // the member that can restart the pages of the other views.
    for (const bool ends_pages : {false, true}) {
        std::list<Hanging> all;
        for (const Member<Web>& member : members()) {
            if ((std::string(member.name) == "set_otr") != ends_pages)
                continue;
            Hanging& hanging = all.emplace_back(member);
            ASSERT_TRUE(hanging.view.open("res://pack/"));
            call_in_callbacks(hanging.caller, hanging.view.facade());
        }
        for (Hanging& hanging : all)
            hanging.view.run("for (;;);");
        for (Hanging& hanging : all) {
            EXPECT_TRUE(hanging.view.draw_until([&] { return hanging.caller->has_called(); }, 25s));
        }
    }
    HostWebView other;
    EXPECT_TRUE(other.open("res://pack/"));
}

}  // namespace

}  // namespace marlune::test
