// When a page makes frames.

#include "support/web/host_web_view.h"

#include <gtest/gtest.h>

#include <string>

namespace marlune::test {

namespace {

// Changes in each of its frames, and reports their count five times a second.
constexpr auto counting_page = R"(<body style='background: white'><p id=text>page</p><script>
let frames = 0;
const count = () => { text.textContent = ++frames; requestAnimationFrame(count); };
requestAnimationFrame(count);
setInterval(() => console.log(frames), 200);
</script>)";

/** The counts that the page reports; draws no frame. */
class Counts {
public:
    explicit Counts(HostWebView& view) : view_(view) {}

    /** True when the page has reported a count that is higher than the previous one. */
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
    EXPECT_TRUE(wait_until([&] { return counts.stand_still(); }))
        << "a page that is not drawn still makes frames";
    EXPECT_TRUE(view.draw_until([&] { return counts.grow(); })) << "the page does not continue";
}

}  // namespace marlune::test
