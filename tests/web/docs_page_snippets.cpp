// The examples of the page guide, each run by a real page in the real engine, in a game with the
// objects that the guide describes.
//
// An "html" example is a page. A "js" example is the script of an otherwise empty page; where it
// does not wait for "godot.ready" itself, it runs after that event. "// -> text" in an example is
// the console message that it writes there, and a line "// .. text" continues that message. The
// example may write no other message.

#include "support/message_log.h"
#include "support/web/host_object.h"
#include "support/web/host_web_view.h"
#include "support/web/resource_pack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cmath>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace marlune::test {

namespace {

using db::ContainerStd;
using db::ValueStd;
using Type = db::VariantTypeStd;
using Arguments = std::vector<ContainerStd>;

// --- The guide ---------------------------------------------------------------------------------

struct Snippet {
    int line = 0;  // of the guide
    std::string heading, language, code;
};

std::ostream& operator<<(std::ostream& out, const Snippet& snippet)
{
    return out << "the example in line " << snippet.line << " of the page guide";
}

std::string without_indentation(const std::string& line)
{
    return line.substr(std::min(line.find_first_not_of(' '), line.size()));
}

std::vector<Snippet> read_snippets(const char* file)
{
    std::vector<Snippet> snippets;
    std::ifstream guide(file);
    std::string line, heading;
    bool is_inside = false;
    for (int number = 1; std::getline(guide, line); ++number) {
        const std::string text = without_indentation(line);
        if (text.starts_with("```")) {
            is_inside = !is_inside;
            if (is_inside)
                snippets.push_back({number, heading, text.substr(3), {}});
        } else if (is_inside) {
            snippets.back().code += line + '\n';
        } else if (text.starts_with('#')) {
            heading = text.substr(text.find_first_not_of("# "));
        }
    }
    return snippets;
}

std::vector<std::string> messages_wanted_by(const Snippet& snippet)
{
    constexpr std::string_view begins = "// -> ", goes_on = "// .. ";
    std::vector<std::string> messages;
    size_t start = 0;
    while (start < snippet.code.size()) {
        const size_t end = snippet.code.find('\n', start);
        const std::string line = snippet.code.substr(start, end - start);
        if (const size_t mark = line.find(begins); mark != std::string::npos)
            messages.push_back(line.substr(mark + begins.size()));
        else if (const size_t more = line.find(goes_on); more != std::string::npos)
            messages.back() += '\n' + line.substr(more + goes_on.size());
        start = end + 1;
    }
    return messages;
}

std::string page_of(const Snippet& snippet)
{
    return snippet.language == "html" ? snippet.code
                                      : "<!doctype html><script src='/snippet.js'></script>";
}

std::string script_of(const Snippet& snippet)
{
    if (snippet.code.find("godot.ready") != std::string::npos)
        return snippet.code;
    return "window.addEventListener('godot.ready', async () => {\n" + snippet.code + "\n});";
}

// --- The game ----------------------------------------------------------------------------------

/** The objects that the guide describes. Must outlive the view that they are published in. */
class Game {
public:
    Game()
    {
        add_properties();
        add_methods();
        game_.method("open_level", {}, [this](auto...) { return ask_for_level(true); });
        game_.method("close_level", {}, [this](auto...) { return ask_for_level(false); });
        level_.property("title", Type::STRING, ValueStd("The ridge"));
    }
    Game(const Game&) = delete;
    Game& operator=(const Game&) = delete;

    void publish_in(const MWebView& view)
    {
        view.webchannel_registerObject("player", &player_.record());
        view.webchannel_registerObject("game", &game_.record());
    }

    /** Does what the page has requested from the game, where a callback may not do it itself. */
    void play(const MWebView& view)
    {
        if (level_is_wanted_ == level_is_there_)
            return;
        level_is_there_ = !level_is_there_;
        if (level_is_there_)
            view.webchannel_registerObject("level", &level_.record());
        else
            view.webchannel_deregisterObject("level");
    }

private:
    void add_properties()
    {
        const auto property = [this](const char* name, Type type, const ValueStd& value) {
            db::PropertyInfoStd& record = player_.property(name, type, value);
            record.func_valueChanged_updateGodot = [](db::PropertyInfoStd*) {};
            return &record;
        };
        property("callsign", Type::STRING, ValueStd("Vesper"));
        property("speed", Type::FLOAT, 5.5);
        position_ = property("position", Type::VECTOR2, db::Vector2Std{3, 4});
        property("weapons", Type::ARRAY, ValueStd(R"(["rifle","knife"])"));
        property("inventory", Type::DICTIONARY, ValueStd(R"({"medkit":2,"key":1})"));
        health_ = property("health", Type::INT, 100);
    }

    // All are called on the Qt thread.
    void add_methods()
    {
        const db::MethodInfoStd& hit =
            player_.signal("hit", {{Type::INT, "points"}, {Type::STRING, "weapon"}});
        player_.method(
            "heal", {{Type::INT, "points"}},
            [this](auto*, const Arguments& values, auto) {
                return change_health(number(values[0]));
            },
            Type::INT);
        player_.method("hurt", {{Type::INT, "points"}},
                       [this, &hit](auto*, const Arguments& values, auto) {
                           change_health(-number(values[0]));
                           hit.func_emit_signal(&hit, {values[0], ValueStd("laser")},
                                                {Type::INT, Type::STRING});
                           return ContainerStd();
                       });
        player_.method(
            "distance_to", {{Type::VECTOR2, "place"}},
            [this](auto*, const Arguments& values, auto) -> ContainerStd {
                const auto from = vector(position_->value), to = vector(values[0]);
                return ValueStd(std::hypot(from.x - to.x, from.y - to.y));
            },
            Type::FLOAT);
        player_.method("sorted", {{Type::ARRAY, "numbers"}}, sort_digits, Type::ARRAY);
        player_.method(
            "equip", {{Type::DICTIONARY, "loadout"}},
            [](auto*, const Arguments& values, auto) { return values[0]; }, Type::DICTIONARY);
    }

    /** The example's numbers have one digit each. */
    static ContainerStd sort_digits(db::MethodInfoStd*, const Arguments& values,
                                    const std::vector<Type>&)
    {
        std::string digits = std::get<std::string>(std::get<ValueStd>(values[0]));
        std::erase_if(digits, [](unsigned char character) { return !std::isdigit(character); });
        std::ranges::sort(digits);
        std::string json;
        for (const char digit : digits)
            json += std::string(json.empty() ? "[" : ",") + digit;
        return ValueStd(json + "]");
    }

    ContainerStd change_health(int points)
    {
        const db::ValueLock lock;
        const int health = std::get<int32_t>(std::get<ValueStd>(health_->value)) + points;
        health_->value = ValueStd(health);
        health_->func_valueChanged_updateQt(health_);
        return ValueStd(health);
    }

    ContainerStd ask_for_level(bool wanted)
    {
        level_is_wanted_ = wanted;
        return {};
    }

    static int number(const ContainerStd& value)
    {
        return int(std::get<double>(std::get<ValueStd>(value)));
    }

    static db::Vector2Std vector(const ContainerStd& value)
    {
        return std::get<db::Vector2Std>(std::get<ValueStd>(value));
    }

    HostObject player_{"player"}, game_{"game"}, level_{"level"};
    db::PropertyInfoStd* health_ = nullptr;
    db::PropertyInfoStd* position_ = nullptr;
    std::atomic<bool> level_is_wanted_ = false;
    bool level_is_there_ = false;
};

class PageGuide : public testing::TestWithParam<Snippet> {};

}  // namespace

TEST(PageGuideItself, has_examples)
{
    EXPECT_GE(read_snippets(MARLUNE_PAGE_GUIDE).size(), 9u);
}

TEST_P(PageGuide, describes_what_its_example_does)
{
    const Snippet& snippet = GetParam();
    ASSERT_TRUE(snippet.language == "js" || snippet.language == "html")
        << "an example of the page guide must be js or html, but " << snippet << " is \""
        << snippet.language << '"';
    std::vector<std::string> wanted = messages_wanted_by(snippet);
    ASSERT_FALSE(wanted.empty()) << snippet << " has no expected message";

    const ResourcePack pack(
        {{"/index.html", page_of(snippet)}, {"/snippet.js", script_of(snippet)}});
    // Qt writes it for each object published later, with or without a notification.
    allow_messages_matching("Registered new object after initialization");
    Game game;
    HostWebView view;
    game.publish_in(view.facade());
    ASSERT_TRUE(view.open("res://guide/"));

    std::vector<std::string> said;
    const auto all_is_said = [&] {
        game.play(view.facade());
        std::ranges::move(view.console_messages(), std::back_inserter(said));
        return said.size() >= wanted.size();
    };
    view.draw_until(all_is_said);
    view.evaluate("$g.player.sorted([])");  // by then an unexpected message has arrived
    std::ranges::move(view.console_messages(), std::back_inserter(said));

    std::ranges::sort(said);  // an example lists them in the order of its lines
    std::ranges::sort(wanted);
    EXPECT_EQ(said, wanted) << snippet;
}

INSTANTIATE_TEST_SUITE_P(Examples, PageGuide, testing::ValuesIn(read_snippets(MARLUNE_PAGE_GUIDE)),
                         [](const auto& info) {
                             std::string name;
                             for (const unsigned char character : info.param.heading)
                                 name += std::isalnum(character) ? char(character) : '_';
                             return name + "_line_" + std::to_string(info.param.line);
                         });

TEST(Readme, has_one_page_which_shows_the_health)
{
    std::vector<Snippet> pages = read_snippets(MARLUNE_README);
    std::erase_if(pages, [](const Snippet& snippet) { return snippet.language != "html"; });
    ASSERT_EQ(pages.size(), 1u);
    const ResourcePack pack({{"/index.html", pages[0].code}});
    Game game;
    HostWebView view;
    game.publish_in(view.facade());
    ASSERT_TRUE(view.open("res://readme/"));

    const auto shows = [&view](const std::string& health) {
        return view.draw_until([&] {
            return view.evaluate("document.getElementById('health').textContent")
                == '"' + health + '"';
        });
    };
    EXPECT_TRUE(shows("100"));
    view.evaluate("$g.player.hurt(30)");
    EXPECT_TRUE(shows("70"));
    EXPECT_EQ(view.console_messages(), std::vector<std::string>());
}

}  // namespace marlune::test
