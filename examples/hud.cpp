// A head-up display: a web page over the frames of a game. The page comes from the game's own pack
// of files and shows the properties of an object, `player`; it reacts to the object's signals,
// calls a method, and writes a property. The example plays a short fight and writes images of it
// to PNG files.
//
//     marlune-hud [--page FOLDER] [OUT]      (defaults: examples/hud, out)
//
// FOLDER contains your own page, with its index.html. The project root, which contains Qt's files,
// is read from MARLUNE_PROJECT_ROOT.

#define STB_IMAGE_WRITE_IMPLEMENTATION
#include "game.h"
#include "landscape.h"

#include <marlune/marlune.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

namespace db = marlune::db;
using namespace example;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Type = db::VariantTypeStd;

constexpr uint32_t WIDTH = 1280, HEIGHT = 720;
constexpr auto FRAME_TIME = 1'000'000us / 60;
constexpr double FRAME_SECONDS = 1.0 / 60;

// --- The pack ----------------------------------------------------------------------------------

// The page's files by their paths, such as "/index.html". A game reads them from its archive.
using Pack = std::map<std::string, std::vector<uint8_t>>;

Pack read_pack(const std::filesystem::path& folder)
{
    Pack pack;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        pack["/" + entry.path().lexically_relative(folder).generic_string()] = {
            std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    if (!pack.contains("/index.html"))
        throw std::runtime_error("there is no index.html in " + folder.string());
    return pack;
}

// Called on the Qt thread. The pack must outlive the library.
void serve(Pack& pack)
{
    marlune::MView().set_func_resource_file(
        [&pack](std::string path, bool&, uint64_t& size) -> uint8_t* {
            const auto file = pack.find(path);
            if (file == pack.end()) {
                std::fprintf(stderr, "the page requests %s, which does not exist\n", path.c_str());
                return nullptr;
            }
            size = file->second.size();
            return file->second.data();
        });
}

// --- The player --------------------------------------------------------------------------------

// The game keeps its own values and publishes copies to the page: values that a page writes are
// only requests.
class Player {
public:
    Player()
    {
        // Pages may write every property. The game accepts two of them and corrects the others.
        const auto accept = [](db::PropertyInfoStd* property) {
            const auto& value = std::get<db::ValueStd>(property->value);
            std::printf("the page has set %s to %s\n", property->name.c_str(),
                        std::get<std::string>(value).c_str());
        };
        callsign_.func_valueChanged_updateGodot = accept;
        sight_.func_valueChanged_updateGodot = accept;
        for (db::PropertyInfoStd* property : {&health_, &ammo_, &magazine_, &score_, &heading_})
            property->func_valueChanged_updateGodot = [this](db::PropertyInfoStd*) { show_all(); };

        // Called on the Qt thread when the page calls the method.
        reload_.func_call_method = [this](db::MethodInfoStd*, std::vector<db::ContainerStd>,
                                          std::vector<Type>) -> db::ContainerStd {
            const int rounds = MAGAZINE - ammo_left_.exchange(MAGAZINE);
            show_all();
            return db::ValueStd(rounds);
        };
        show_all();
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void shoot()
    {
        if (ammo_left_ == 0)
            return emit(ammo_empty_, {});
        --ammo_left_;
        show_all();
        emit(shot_, {});
        if (ammo_left_ == 0)
            emit(ammo_empty_, {});
    }

    // `from` is in degrees, clockwise from straight ahead.
    void take_hit(int points, double from)
    {
        health_left_ = std::max(0, health_left_ - points);
        show_all();
        emit(hit_, {db::ValueStd(points), db::ValueStd(from)});
    }

    void score(int points, const std::string& reason)
    {
        score_so_far_ += points;
        show_all();
        emit(scored_, {db::ValueStd(points), db::ValueStd(reason)});
    }

    void turn_to(double degrees)
    {
        direction_ = degrees;
        show_all();
    }

    double direction() const { return direction_; }

    db::AbstractContextObjectStd* record() { return &record_; }

private:
    static constexpr int MAGAZINE = 30;

    void show_all()
    {
        show(health_, health_left_.load());
        show(ammo_, ammo_left_.load());
        show(magazine_, MAGAZINE);
        show(score_, score_so_far_.load());
        show(heading_, direction_.load());
    }

    static void show(db::PropertyInfoStd& property, const db::ValueStd& value)
    {
        {
            const db::ValueLock lock;
            if (property.value == db::ContainerStd(value))
                return;
            property.value = value;
        }
        if (property.func_valueChanged_updateQt)  // not before it is published
            property.func_valueChanged_updateQt(&property);
    }

    static void emit(const db::MethodInfoStd& signal, std::vector<db::ContainerStd> values)
    {
        std::vector<Type> codes;
        for (const db::ArgumentInfoStd& argument : signal.args)
            codes.push_back(argument.type);
        if (signal.func_emit_signal)
            signal.func_emit_signal(&signal, std::move(values), std::move(codes));
    }

    // The Qt thread and the game's thread change them.
    std::atomic<int> health_left_ = 100, ammo_left_ = MAGAZINE, score_so_far_ = 12'400;
    std::atomic<double> direction_ = 0;

    db::PropertyInfoStd callsign_{"callsign", Type::STRING, db::ValueStd("Vesper Seven")};
    db::PropertyInfoStd sight_{"sight", Type::STRING, db::ValueStd("#63f5cf")};
    db::PropertyInfoStd health_{"health", Type::INT};
    db::PropertyInfoStd ammo_{"ammo", Type::INT};
    db::PropertyInfoStd magazine_{"magazine", Type::INT};
    db::PropertyInfoStd score_{"score", Type::INT};
    db::PropertyInfoStd heading_{"heading", Type::FLOAT};

    db::MethodInfoStd reload_{.name = "reload", .return_type = db::ReturnInfoStd{Type::INT}};
    db::MethodInfoStd shot_{.name = "shot", .is_signal = true};
    db::MethodInfoStd ammo_empty_{.name = "ammo_empty", .is_signal = true};
    db::MethodInfoStd hit_{
        .name = "hit", .args = {{Type::INT, "points"}, {Type::FLOAT, "from"}}, .is_signal = true};
    db::MethodInfoStd scored_{.name = "scored",
                              .args = {{Type::INT, "points"}, {Type::STRING, "reason"}},
                              .is_signal = true};

    db::AbstractContextObjectStd record_{.name = "player",
                                         .methods = {{"reload", &reload_},
                                                     {"shot", &shot_},
                                                     {"ammo_empty", &ammo_empty_},
                                                     {"hit", &hit_},
                                                     {"scored", &scored_}},
                                         .properties = {{"callsign", &callsign_},
                                                        {"sight", &sight_},
                                                        {"health", &health_},
                                                        {"ammo", &ammo_},
                                                        {"magazine", &magazine_},
                                                        {"score", &score_},
                                                        {"heading", &heading_}}};
};

// --- The view ----------------------------------------------------------------------------------

// The player must outlive the view.
class Hud {
public:
    Hud(Gpu& gpu, Player& player)
    {
        view_.set_view_monitor(gpu.instance);
        view_.set_statistics_monitor(gpu.physical_device, gpu.device);
        view_.set_resolution({WIDTH, HEIGHT});
        view_.set_zoom_factor(100);
        view_.set_func_javascript_console_log([this](int, std::string message, int line,
                                                     std::string source) {
            if (message == DRAWN)
                page_has_drawn_ = true;
            else
                std::printf("the page says: %s (%s:%d)\n", message.c_str(), source.c_str(), line);
        });
        // Refuses links that would lead the page, and with it the player, out of the pack.
        view_.set_func_navigation_handler([](std::string url, std::string) {
            return url.starts_with("res:") || url == "about:blank";
        });
        view_.set_func_loading_changed(
            [this](int status, std::string url, std::string, std::string error, int) {
                if (status == FAILED)
                    std::fprintf(stderr, "%s cannot be shown: %s\n", url.c_str(), error.c_str());
                status_ = status;
            });
        view_.webchannel_registerObject("player", player.record());
        view_.set_url("res://hud/index.html");
    }
    ~Hud() { view_.destroy(); }
    Hud(const Hud&) = delete;
    Hud& operator=(const Hud&) = delete;

    void open()
    {
        if (!view_.load())
            throw std::runtime_error("the view cannot be loaded");
        render_until([this] {
            if (status_ == FAILED)
                throw std::runtime_error("the page has not been loaded");
            return status_ == SUCCEEDED;
        });
    }

    void render() { view_.render(); }

    // Waits until the page has displayed all changes. A game does not need to.
    void catch_up()
    {
        page_has_drawn_ = false;
        view_.run_javascript(std::string("requestAnimationFrame(() => requestAnimationFrame(() =>"
                                         " console.log('")
                             + DRAWN + "')))");
        render_until([this] { return page_has_drawn_.load(); });
        render();
    }

    void press(char letter)
    {
        const auto key =
            uint32_t(std::toupper(letter));  // Qt::Key has the codes of capital letters
        view_.key_event(key, 0, {letter});
        view_.key_event(key, 1, {letter});
    }

    Picture picture(const Gpu& gpu) { return read_back(gpu, view_.get_texture(), WIDTH, HEIGHT); }

private:
    enum Status { STARTED, STOPPED, SUCCEEDED, FAILED };
    static constexpr auto DRAWN = "the page has drawn";

    template <typename Condition>
    void render_until(Condition holds)
    {
        const auto end = Clock::now() + 30s;
        while (!holds()) {
            if (Clock::now() > end)
                throw std::runtime_error("the page does not respond");
            render();
            std::this_thread::sleep_for(FRAME_TIME);
        }
    }

    marlune::MWebView view_;
    std::atomic<int> status_ = STARTED;
    std::atomic<bool> page_has_drawn_ = false;
};

// --- The fight ---------------------------------------------------------------------------------

// The script of the fight, in seconds of the game's time.
using Script = std::multimap<double, std::function<void()>>;

Script write_script(Player& player, Hud& hud, const std::function<void(const char*)>& save)
{
    Script script;
    const auto burst = [&](double start, int rounds) {
        for (int i = 0; i < rounds; ++i)
            script.emplace(start + i * 0.08, [&player] { player.shoot(); });
    };

    script.emplace(1.2, [=] { save("hud"); });
    burst(1.3, 9);
    script.emplace(2.1, [&player] { player.score(150, "drone"); });
    script.emplace(2.1, [&player] { player.score(50, "long shot"); });
    script.emplace(2.2, [=] { save("hud-kill"); });
    script.emplace(2.6, [&player] { player.take_hit(38, 245); });
    script.emplace(2.8, [=] { save("hud-hit"); });
    script.emplace(3.6, [&player] { player.take_hit(35, 320); });
    burst(3.8, 21);
    script.emplace(5.6, [=] { save("hud-empty"); });
    script.emplace(5.8, [&hud] { hud.press('c'); });  // the page changes the sight
    script.emplace(5.9, [&hud] { hud.press('r'); });  // and reloads
    script.emplace(7.2, [=] { save("hud-reloaded"); });
    return script;
}

void run(const std::filesystem::path& page, const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    Pack pack = read_pack(page);
    Gpu gpu;
    const Library library;
    serve(pack);
    Player player;
    Hud hud(gpu, player);
    hud.open();

    Script script = write_script(player, hud, [&](const std::string& name) {
        hud.catch_up();
        const Landscape game(player.direction(), name == "hud-kill");
        save_png(lay_over(hud.picture(gpu), game.paint(WIDTH, HEIGHT)), folder / (name + ".png"));
    });
    double now = 0;
    for (auto frame = Clock::now(); !script.empty(); now += FRAME_SECONDS) {
        player.turn_to(312 + 14 * std::sin(now * 0.7));
        while (!script.empty() && script.begin()->first <= now) {
            script.begin()->second();
            script.erase(script.begin());
        }
        hud.render();
        frame = std::max(frame + FRAME_TIME, Clock::now());
        std::this_thread::sleep_until(frame);
    }
    std::printf("the images are in %s\n", folder.string().c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        std::vector<std::string> arguments(argv + 1, argv + argc);
        std::string page = MARLUNE_HUD_PAGE;
        if (arguments.size() >= 2 && arguments.front() == "--page") {
            page = arguments[1];
            arguments.erase(arguments.begin(), arguments.begin() + 2);
        }
        run(page, arguments.empty() ? "out" : arguments.front());
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "marlune-hud: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
