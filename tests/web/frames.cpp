// When the frames of a page are made.

#include "support/web/host_web_view.h"

#include <gtest/gtest.h>

#include <string>

namespace marlune::test {

namespace {

// Changes in each of its frames, and tells their count five times a second.
constexpr auto counting_page = R"(<body style='background: white'><p id=text>page</p><script>
let frames = 0;
const count = () => { text.textContent = ++frames; requestAnimationFrame(count); };
requestAnimationFrame(count);
setInterval(() => console.log(frames), 200);
</script>)";

/** The counts that the page tells; asks for no frame. */
class Counts {
public:
    explicit Counts(HostWebView& view) : view_(view) {}

    /** True when a count has come that is higher than the one before. */
    bool grow() { return next() && last_ > before_ && before_ > 0; }
    bool stand_still() { return next() && last_ == before_; }

private:
    bool next()
    {
        const auto record = view_.console().take_first([](const auto&) { return true; });
        if (!record)
            return false;
        before_ = last_;
        last_ = std::stoi(record->message);
        return true;
    }

    HostWebView& view_;
    int before_ = 0;
    int last_ = 0;
};

}  // namespace

TEST(PageFrames, are_made_while_the_host_draws_and_saved_while_it_does_not)
{
    HostWebView view;
    ASSERT_TRUE(view.show_html(counting_page));
    Counts counts(view);
    EXPECT_TRUE(view.draw_until([&] { return counts.grow(); }));
    EXPECT_TRUE(wait_until([&] { return counts.stand_still(); })) << "an unseen page goes on";
    EXPECT_TRUE(view.draw_until([&] { return counts.grow(); })) << "the page does not go on";
}

}  // namespace marlune::test
