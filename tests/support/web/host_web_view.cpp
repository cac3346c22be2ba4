#include "support/web/host_web_view.h"

#include <QString>

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>

namespace marlune::test {

namespace {

using namespace std::chrono_literals;

// The web engine starts several processes for the first page, on a machine that may have few cores.
constexpr auto LOADING_TIME = 20s;

constexpr auto BLANK_PAGE = "about:blank";

/** STOPPED is no end: a load is stopped by the next one, whose end is still to follow. */
bool is_end(const Load& load)
{
    return load.status == Load::SUCCEEDED || load.status == Load::FAILED;
}

/** Before its first page, a view may report the blank page with which the web engine creates it. */
bool may_be_of(const std::string& url, const Load& load)
{
    return load.url != BLANK_PAGE || url == BLANK_PAGE;
}

/** The key of a character; keyboards name keys by the upper-case character. */
uint32_t key_of(char32_t character)
{
    switch (character) {
    case U'\n':
        return KEY_ENTER;
    case U'\t':
        return KEY_TAB;
    default:
        return QChar::toUpper(character);
    }
}

std::string text_of(char32_t character)
{
    const char32_t typed = character == U'\n' ? U'\r' : character;
    return QString::fromUcs4(&typed, 1).toStdString();
}

std::string unique_tag()
{
    static int count = 0;
    return "[value " + std::to_string(++count) + "] ";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Load& load)
{
    constexpr const char* names[] = {"started", "stopped", "succeeded", "failed"};
    const bool is_known = load.status >= 0 && load.status < int(std::size(names));
    out << (is_known ? names[load.status] : "status " + std::to_string(load.status)) << " "
        << load.url;
    if (!load.error_domain.empty() || load.error_code)
        out << " (" << load.error_domain << " " << load.error_code << ", " << load.error_string
            << ")";
    return out;
}

void LoadLog::add(Load load)
{
    const std::lock_guard lock(mutex_);
    loads_.push_back(std::move(load));
}

std::vector<Load> LoadLog::all()
{
    const std::lock_guard lock(mutex_);
    return loads_;
}

MWebView::LoadingChanged write_to(std::shared_ptr<LoadLog> log)
{
    return [log = std::move(log)](int status, std::string url, std::string error_domain,
                                  std::string error_string, int error_code) {
        log->add({status, std::move(url), std::move(error_domain), std::move(error_string),
                  error_code, std::this_thread::get_id()});
    };
}

HostWebView::HostWebView(Size resolution, VulkanHost& host) : HostViewOf(resolution, host)
{
    facade().set_zoom_factor(100);
    facade().set_func_loading_changed(write_to(loads_));
}

testing::AssertionResult HostWebView::open(const std::string& url)
{
    const size_t first = loads().size();
    facade().set_url(url);
    if (!load())
        return testing::AssertionFailure() << "the scene for " << url << " cannot be loaded";
    return wait_until_loaded(url, first);
}

testing::AssertionResult HostWebView::go_to(const std::string& url)
{
    const size_t first = loads().size();
    facade().set_url(url);
    return wait_until_loaded(url, first);
}

testing::AssertionResult HostWebView::show_html(const std::string& html,
                                                const std::string& base_url)
{
    if (!has_scene_) {
        if (const testing::AssertionResult opened = open(BLANK_PAGE); !opened)
            return opened;
    }
    const size_t first = loads().size();
    facade().load_html(html, base_url);
    return wait_until_loaded(base_url, first);
}

testing::AssertionResult HostWebView::wait_until_drawn()
{
    // A page that has nothing to draw never reports a paint. After one second it counts as drawn.
    const std::string answer = evaluate(R"(new Promise(drawn => {
        const look = now => {
            const painted = performance.getEntriesByType("paint").length > 0 || now > 1000;
            requestAnimationFrame(painted ? () => drawn(true) : look);
        };
        requestAnimationFrame(look);
    }))");
    if (answer == "true")
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the page was never drawn";
}

testing::AssertionResult HostWebView::wait_for_load(Load::Status status, size_t first)
{
    const auto has_come = [&] {
        const std::vector<Load> all = loads();
        return std::any_of(all.begin() + std::ptrdiff_t(std::min(first, all.size())), all.end(),
                           [&](const Load& load) { return load.status == status; });
    };
    if (draw_until(has_come, LOADING_TIME))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << Load{status} << "never arrived" << describe_loads();
}

std::string HostWebView::evaluate(const std::string& expression)
{
    const std::string tag = unique_tag();
    run("(async () => { try { console.log('" + tag + "' + JSON.stringify(await (" + expression
        + "\n))); } catch (error) { console.log('" + tag + "threw ' + error); } })()");
    const std::optional<std::string> answer = wait_for_tagged(tag);
    EXPECT_TRUE(answer) << "the page has not answered with the value of " << expression;
    return answer.value_or("");
}

testing::AssertionResult HostWebView::wait_for_console(const std::string& message)
{
    const auto has_come = [&] {
        return console()
            .take_first([&](const ConsoleRecord& record) { return record.message == message; })
            .has_value();
    };
    if (draw_until(has_come))
        return testing::AssertionSuccess();
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << "\"" << message << "\" never arrived; these messages did:";
    for (const std::string& other : console_messages())
        failure << "\n  " << other;
    return failure;
}

void HostWebView::move(uint32_t x, uint32_t y)
{
    facade().mouse_move(x, y);
}

void HostWebView::press(uint32_t x, uint32_t y, MouseButton button)
{
    facade().mouse_click(button, 0, x, y);
}

void HostWebView::release(uint32_t x, uint32_t y, MouseButton button)
{
    facade().mouse_click(button, 1, x, y);
}

void HostWebView::click(uint32_t x, uint32_t y, MouseButton button)
{
    move(x, y);
    press(x, y, button);
    release(x, y, button);
}

void HostWebView::type_text(const std::string& text)
{
    for (const char32_t character : QString::fromStdString(text).toStdU32String())
        type(key_of(character), text_of(character));
}

testing::AssertionResult HostWebView::wait_for_colour(uint32_t x, uint32_t y, Colour colour,
                                                      int tolerance)
{
    const auto has_colour = [&] {
        draw_frame();  // more frequent checks than frames would only slow the web engine down
        return is_close(picture().pixel(x, y), colour, tolerance);
    };
    if (wait_until(has_colour))
        return testing::AssertionSuccess();
    const Image last = picture();
    return testing::AssertionFailure()
        << "pixel (" << x << ", " << y << ") never became " << colour << " but is "
        << last.pixel(x, y) << "; see " << keep_picture(last);
}

bool HostWebView::load()
{
    has_scene_ = facade().load();
    note_frame();
    return has_scene_;
}

std::string HostWebView::describe_loads()
{
    std::ostringstream text;
    text << "; the load events:";
    for (const Load& load : loads())
        text << "\n  " << load;
    return text.str();
}

/** Waits for the end of the first load of `url`, or of its redirect, from event `first` on. */
testing::AssertionResult HostWebView::wait_until_loaded(const std::string& url, size_t first)
{
    std::optional<Load> end;
    const auto has_ended = [&] {
        const std::vector<Load> all = loads();
        for (size_t i = first; i < all.size() && !end; ++i) {
            if (is_end(all[i]) && may_be_of(url, all[i]))
                end = all[i];
        }
        return end.has_value();
    };
    if (draw_until(has_ended, LOADING_TIME) && end->status == Load::SUCCEEDED)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << url << " has not been loaded" << describe_loads();
}

std::optional<std::string> HostWebView::wait_for_tagged(const std::string& tag)
{
    std::optional<ConsoleRecord> answer;
    const auto has_come = [&] {
        answer = console().take_first(
            [&](const ConsoleRecord& record) { return record.message.starts_with(tag); });
        return answer.has_value();
    };
    if (!draw_until(has_come))
        return std::nullopt;
    return answer->message.substr(tag.size());
}

}  // namespace marlune::test
