// The examples of the guides to web views. They are compiled here as a host would compile them; the
// guides quote them.

#include <marlune/marlune.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace guide {

marlune::MWebView first_page(VkInstance instance, VkPhysicalDevice physical_device, VkDevice device)
{
    marlune::MWebView view;
    view.set_view_monitor(instance);
    view.set_statistics_monitor(physical_device, device);
    view.set_resolution({1280, 720});
    view.set_zoom_factor(100);  // one pixel of the page is one of the texture
    view.set_url("https://example.org/");
    if (!view.load())
        std::fprintf(stderr, "the view cannot be loaded, see the messages above\n");
    return view;
}

void watch_page(const marlune::MWebView& view, std::atomic<bool>& hangs)
{
    view.set_func_page_responding([&hangs](bool responding) { hangs = !responding; });
}

void tell_of_loading(const marlune::MWebView& view)
{
    view.set_func_loading_changed([](int status, std::string url, std::string domain,
                                     std::string text, int code) {
        enum { STARTED, STOPPED, SUCCEEDED, FAILED };
        if (status == FAILED && domain == "process")
            std::printf("the page's process is gone (exit code %d)\n", code);
        else if (status == FAILED)
            std::printf("%s failed: %s (%s %d)\n", url.c_str(), text.c_str(), domain.c_str(), code);
        else if (status == SUCCEEDED)
            std::printf("%s is there\n", url.c_str());
    });
}

void show_text(const marlune::MWebView& view, const std::string& html)
{
    view.load_html(html, "res://game/help/");  // relative addresses come from the pack
    view.run_javascript("scrollTo(0, document.body.scrollHeight)");
}

void keep_cookies(const marlune::MWebView& view, const std::string& folder)
{
    view.set_storage_path(folder);
    view.set_otr(false);
    view.set_user_agent("MyGame/1.2");
    view.set_cookie("example.org", "/", "session", "4711", true, "lax", 2'000'000'000);
}

void lock_down(const marlune::MWebView& view)
{
    view.set_func_navigation_handler([](std::string url, std::string) {
        return url.starts_with("res://game/") || url == "about:blank";
    });
    view.set_otr(true);
    view.set_local_content_can_access_remote_urls(false);
    view.set_local_content_can_access_file_urls(false);
    view.set_allow_running_insecure_content(false);
    view.set_javascript_can_open_windows(false);
    view.set_navigate_on_drop_enabled(false);
    view.set_local_storage_enabled(false);
    view.set_webGLenabled(false);
    view.set_pdf_viewer_enabled(false);
    view.set_webRTCpublic_interfaces_only(true);
    view.set_unknown_url_scheme_policy(1);
}

namespace db = marlune::db;

struct Player {
    db::PropertyInfoStd health{
        .name = "health", .type = db::VariantTypeStd::INT, .value = db::ValueStd(100)};
    db::MethodInfoStd heal{.name = "heal",
                           .args = {{db::VariantTypeStd::INT, "points"}},
                           .return_type = db::ReturnInfoStd{db::VariantTypeStd::INT}};
    db::MethodInfoStd hit{
        .name = "hit",
        .args = {{db::VariantTypeStd::INT, "points"}, {db::VariantTypeStd::STRING, "weapon"}},
        .is_signal = true};
    db::AbstractContextObjectStd record{.name = "player",
                                        .methods = {{"heal", &heal}, {"hit", &hit}},
                                        .properties = {{"health", &health}}};

    Player() = default;
    Player(const Player&) = delete;  // the record holds the addresses of the members
    Player& operator=(const Player&) = delete;
};

void publish(const marlune::MWebView& view, Player& player)
{
    view.webchannel_registerObject("player", &player.record);
}

int change_health(Player& player, int points)
{
    int health = 0;
    {
        const db::ValueLock lock;
        health = std::get<int32_t>(std::get<db::ValueStd>(player.health.value)) + points;
        player.health.value = db::ValueStd(health);
    }
    player.health.func_valueChanged_updateQt(&player.health);
    return health;
}

void hit(Player& player, int points, const std::string& weapon)
{
    change_health(player, -points);
    player.hit.func_emit_signal(&player.hit, {db::ValueStd(points), db::ValueStd(weapon)},
                                {db::VariantTypeStd::INT, db::VariantTypeStd::STRING});
}

void serve_calls(Player& player)
{
    player.heal.func_call_method = [&player](db::MethodInfoStd*,
                                             std::vector<db::ContainerStd> values,
                                             std::vector<db::VariantTypeStd>) -> db::ContainerStd {
        // A page can give anything. A number comes as double.
        const auto* const points = std::get_if<double>(&std::get<db::ValueStd>(values[0]));
        const double taken = points ? std::clamp(*points, 0.0, 50.0) : 0;
        return db::ValueStd(change_health(player, int(taken)));
    };
}

void take_wishes(Player& player)
{
    player.health.func_valueChanged_updateGodot = [](db::PropertyInfoStd* health) {
        const db::ValueLock lock;
        const int wish = std::get<int32_t>(std::get<db::ValueStd>(health->value));
        health->value = db::ValueStd(std::clamp(wish, 0, 100));
        health->func_valueChanged_updateQt(health);  // the page sees what has become of its wish
    };
}

db::PropertyInfoStd inventory{.name = "inventory",
                              .type = db::VariantTypeStd::DICTIONARY,
                              .value = db::ValueStd(R"({"medkit":2,"key":1})")};

}  // namespace guide
