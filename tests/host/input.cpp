// Mouse, wheel and keys, as the scene InputProbe receives them. Its numbers are those of Qt.

#include "support/host_view.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace marlune::test {

namespace {

using Messages = std::vector<std::string>;

enum Button : uint16_t { LEFT, RIGHT, MIDDLE, BACK, FORWARD };
enum Action : uint16_t { PRESS, RELEASE };

constexpr uint32_t KEY_A = 0x41, KEY_C = 0x43;
constexpr uint32_t KEY_SHIFT = 0x01000020, KEY_CONTROL = 0x01000021, KEY_META = 0x01000022,
                   KEY_ALT = 0x01000023;

/** In the event of a modifier key itself, Qt inverts the modifier of that key. */
std::string key_message(const std::string& kind, uint32_t key, const std::string& text,
                        uint32_t modifiers)
{
    return "key " + kind + " " + std::to_string(key) + " text=\"" + text
        + "\" modifiers=" + std::to_string(modifiers) + " repeat=false count=1";
}

constexpr uint32_t NO_MODIFIER = 0, SHIFT = 0x02000000, CONTROL = 0x04000000, ALT = 0x08000000,
                   META = 0x10000000;

class Input : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(view.load("InputProbe")); }

    /** The events that the scene has received since the last call. */
    Messages seen() { return view.console().take_messages(); }

    std::string last_seen()
    {
        const Messages messages = seen();
        return messages.empty() ? "nothing" : messages.back();
    }

    void press(uint32_t key, const std::string& text = {}) { view->key_event(key, PRESS, text); }
    void release(uint32_t key, const std::string& text = {})
    {
        view->key_event(key, RELEASE, text);
    }

    HostView view;
};

TEST_F(Input, of_a_key_returns_when_the_scene_has_reacted)
{
    bool reacted = false, reacted_in_time = false;
    // The callback runs on the Qt thread, where only the call itself can serve the scene meanwhile.
    view->set_func_javascript_console_log(
        [&, is_first = true](int, std::string message, int, std::string) mutable {
            reacted = reacted || message == "reacted";
            if (!std::exchange(is_first, false))
                return;
            press(KEY_A, "later");
            reacted_in_time = reacted;
        });
    press(KEY_A, "a");
    EXPECT_TRUE(reacted_in_time);
}

TEST_F(Input, sends_a_click_with_the_buttons_that_are_held)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    view->mouse_click(LEFT, RELEASE, 10, 20);
    EXPECT_EQ(seen(),
              (Messages{"press 10,20 button=1 buttons=1 modifiers=0",
                        "release 10,20 button=1 buttons=0 modifiers=0"}));
}

TEST_F(Input, knows_five_buttons)
{
    const std::vector<int> qt_buttons = {1, 2, 4, 8, 16};
    for (uint16_t button = LEFT; button <= FORWARD; ++button) {
        view->mouse_click(button, PRESS, 10, 20);
        view->mouse_click(button, RELEASE, 10, 20);
        const std::string number = std::to_string(qt_buttons[button]);
        EXPECT_EQ(seen(),
                  (Messages{"press 10,20 button=" + number + " buttons=" + number + " modifiers=0",
                            "release 10,20 button=" + number + " buttons=0 modifiers=0"}));
    }
}

TEST_F(Input, ignores_other_buttons)
{
    for (const uint16_t button : {5, 7, 65535}) {
        view->mouse_click(button, PRESS, 10, 20);
        view->mouse_click(button, RELEASE, 10, 20);
    }
    EXPECT_EQ(seen(), Messages());
}

TEST_F(Input, ignores_other_actions_of_a_button)
{
    view->mouse_click(LEFT, 2, 10, 20);
    view->mouse_click(RIGHT, PRESS, 10, 20);
    EXPECT_EQ(seen(), Messages{"press 10,20 button=2 buttons=2 modifiers=0"})
        << "the button does not count as held";
    view->mouse_click(RIGHT, RELEASE, 10, 20);
}

TEST_F(Input, combines_the_buttons_that_are_held_together)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    view->mouse_click(MIDDLE, PRESS, 10, 20);
    view->mouse_click(LEFT, RELEASE, 10, 20);
    view->mouse_click(MIDDLE, RELEASE, 10, 20);
    EXPECT_EQ(seen(),
              (Messages{"press 10,20 button=1 buttons=1 modifiers=0",
                        "press 10,20 button=4 buttons=5 modifiers=0",
                        "release 10,20 button=1 buttons=4 modifiers=0",
                        "release 10,20 button=4 buttons=0 modifiers=0"}));
}

TEST_F(Input, remembers_held_buttons_when_the_scene_is_loaded_again)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    view->reset();
    ASSERT_TRUE(view.load("InputProbe"));
    seen();
    view->mouse_click(RIGHT, PRESS, 10, 20);
    EXPECT_EQ(seen(), Messages{"press 10,20 button=2 buttons=3 modifiers=0"});
}

TEST_F(Input, remembers_where_the_pointer_is_when_the_scene_is_loaded_again)
{
    view->mouse_move(30, 40);
    view->reset();
    ASSERT_TRUE(view.load("InputProbe"));
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_move(30, 40);
    EXPECT_EQ(seen(), Messages()) << "the pointer is already there";
    view->mouse_move(31, 40);
    EXPECT_EQ(seen(), Messages{"move 31,40 button=0 buttons=1 modifiers=0"});
    view->mouse_click(LEFT, RELEASE, 31, 40);
}

TEST_F(Input, moves_the_pointer)
{
    view->mouse_move(1, 1);  // the pointer enters
    seen();
    view->mouse_move(5, 6);
    EXPECT_EQ(seen(), Messages{"move 5,6 button=0 buttons=0 modifiers=0"});
}

TEST_F(Input, drags_with_the_button_that_is_held)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_move(30, 40);
    EXPECT_EQ(seen(), Messages{"move 30,40 button=0 buttons=1 modifiers=0"});
    view->mouse_click(LEFT, RELEASE, 30, 40);
}

TEST_F(Input, ignores_a_move_to_the_same_place)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_move(5, 5);
    view->mouse_move(5, 5);
    EXPECT_EQ(seen(), Messages{"move 5,5 button=0 buttons=1 modifiers=0"});
    view->mouse_move(6, 5);
    view->mouse_move(5, 5);
    EXPECT_EQ(seen().size(), 2u) << "it moves there again after it was elsewhere";
    view->mouse_click(LEFT, RELEASE, 5, 5);
}

TEST_F(Input, starts_with_the_pointer_at_the_origin)
{
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_move(0, 0);
    EXPECT_EQ(seen(), Messages());
    view->mouse_click(LEFT, RELEASE, 10, 20);
}

TEST_F(Input, moves_with_the_modifier_that_is_held)
{
    press(KEY_SHIFT);
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_move(11, 20);
    EXPECT_EQ(seen(), Messages{"move 11,20 button=0 buttons=1 modifiers=" + std::to_string(SHIFT)});
    view->mouse_click(LEFT, RELEASE, 11, 20);
    release(KEY_SHIFT);
}

TEST_F(Input, clicks_without_modifiers_whatever_is_held)
{
    press(KEY_CONTROL);
    seen();
    view->mouse_click(LEFT, PRESS, 10, 20);
    view->mouse_click(LEFT, RELEASE, 10, 20);
    EXPECT_EQ(seen(),
              (Messages{"press 10,20 button=1 buttons=1 modifiers=0",
                        "release 10,20 button=1 buttons=0 modifiers=0"}));
}

TEST_F(Input, turns_the_wheel_both_ways)
{
    view->mouse_wheel_down(10, 20);
    view->mouse_wheel_up(30, 40);
    const std::string rest = " pixels=0,0 buttons=0 modifiers=0 inverted=false";
    EXPECT_EQ(seen(),
              (Messages{"wheel 10,20 angle=0,-120" + rest, "wheel 30,40 angle=0,120" + rest}));
}

TEST_F(Input, turns_the_wheel_without_buttons_and_modifiers_whatever_is_held)
{
    press(KEY_CONTROL);
    view->mouse_click(LEFT, PRESS, 10, 20);
    seen();
    view->mouse_wheel_up(10, 20);
    EXPECT_EQ(seen(),
              Messages{"wheel 10,20 angle=0,120 pixels=0,0 buttons=0 modifiers=0 inverted=false"});
    view->mouse_click(MIDDLE, PRESS, 10, 20);
    EXPECT_EQ(seen(), Messages{"press 10,20 button=4 buttons=5 modifiers=0"})
        << "the wheel does not change the held buttons";
}

TEST_F(Input, outside_of_the_scene_is_ignored)
{
    view->mouse_click(LEFT, PRESS, 100000, 4000000000);
    view->mouse_click(LEFT, RELEASE, 100000, 4000000000);
    view->mouse_wheel_up(4000000000, 4000000000);
    EXPECT_EQ(seen(), Messages());
}

TEST_F(Input, sends_keys_with_their_text)
{
    press(KEY_A, "a");
    release(KEY_A, "a");
    EXPECT_EQ(seen(),
              (Messages{key_message("press", KEY_A, "a", NO_MODIFIER),
                        key_message("release", KEY_A, "a", NO_MODIFIER)}));
}

TEST_F(Input, sends_text_of_any_script)
{
    press(0, "é月🌊");
    EXPECT_EQ(seen(), Messages{key_message("press", 0, "é月🌊", NO_MODIFIER)});
}

TEST_F(Input, ignores_other_actions_of_a_key)
{
    view->key_event(KEY_A, 2, "a");
    view->key_event(KEY_SHIFT, 2, "");
    EXPECT_EQ(seen(), Messages());
    press(KEY_A, "a");
    EXPECT_EQ(seen(), Messages{key_message("press", KEY_A, "a", NO_MODIFIER)})
        << "no modifier counts as held";
}

TEST_F(Input, holds_a_modifier_from_its_key_to_the_next_release)
{
    press(KEY_SHIFT);
    press(KEY_A, "A");
    release(KEY_A, "A");
    press(KEY_A, "a");
    EXPECT_EQ(seen(),
              (Messages{key_message("press", KEY_SHIFT, "", NO_MODIFIER),
                        key_message("press", KEY_A, "A", SHIFT),
                        key_message("release", KEY_A, "A", NO_MODIFIER),
                        key_message("press", KEY_A, "a", NO_MODIFIER)}));
}

TEST_F(Input, knows_four_modifier_keys)
{
    for (const auto& [key, modifier] :
         {std::pair(KEY_CONTROL, CONTROL), std::pair(KEY_SHIFT, SHIFT), std::pair(KEY_ALT, ALT),
          std::pair(KEY_META, META)}) {
        press(key);
        press(KEY_A, "a");
        release(KEY_A, "a");
        EXPECT_EQ(seen(),
                  (Messages{key_message("press", key, "", NO_MODIFIER),
                            key_message("press", KEY_A, "a", modifier),
                            key_message("release", KEY_A, "a", NO_MODIFIER)}));
    }
}

TEST_F(Input, holds_only_the_last_modifier)
{
    press(KEY_CONTROL);
    press(KEY_SHIFT);
    press(KEY_A, "a");
    EXPECT_EQ(last_seen(), key_message("press", KEY_A, "a", SHIFT));
}

TEST_F(Input, that_releases_a_modifier_key_sends_its_modifier_once_more)
{
    press(KEY_SHIFT);
    release(KEY_SHIFT);
    press(KEY_A, "a");
    EXPECT_EQ(seen(),
              (Messages{key_message("press", KEY_SHIFT, "", NO_MODIFIER),
                        key_message("release", KEY_SHIFT, "", NO_MODIFIER),
                        key_message("press", KEY_A, "a", SHIFT)}))
        << "the key's own code sets it again after the release has cleared it";
}

TEST_F(Input, reads_a_modifier_from_the_start_of_the_text)
{
    for (const auto& [text, modifier] : {std::pair("Ctrl+c", CONTROL), std::pair("Shift+c", SHIFT),
                                         std::pair("Alt+c", ALT), std::pair("Meta+c", META)}) {
        press(KEY_C, text);
        EXPECT_EQ(seen(), Messages{key_message("press", KEY_C, "c", modifier)}) << text;
    }
}

TEST_F(Input, reads_only_one_modifier_from_the_text)
{
    press(KEY_A, "Ctrl+Shift+A");
    EXPECT_EQ(seen(), Messages{key_message("press", KEY_A, "Shift+A", CONTROL)});
}

TEST_F(Input, replaces_the_held_modifier_by_that_of_the_text)
{
    press(KEY_SHIFT);
    press(KEY_C, "Ctrl+c");
    EXPECT_EQ(last_seen(), key_message("press", KEY_C, "c", CONTROL));
}

TEST_F(Input, leaves_other_text_with_a_plus_as_it_is)
{
    press(KEY_SHIFT);
    press(KEY_A, "a+b");
    press(KEY_A, "+");
    press(KEY_A, "ctrl+a");
    EXPECT_EQ(seen(),
              (Messages{key_message("press", KEY_SHIFT, "", NO_MODIFIER),
                        key_message("press", KEY_A, "a+b", SHIFT),
                        key_message("press", KEY_A, "+", SHIFT),
                        key_message("press", KEY_A, "ctrl+a", SHIFT)}));
}

TEST_F(Input, does_not_hold_a_modifier_key_whose_text_has_a_plus)
{
    press(KEY_SHIFT, "a+b");
    press(KEY_A, "a");
    EXPECT_EQ(last_seen(), key_message("press", KEY_A, "a", NO_MODIFIER));
}

TEST_F(Input, removes_the_named_modifier_from_a_release_too)
{
    release(KEY_C, "Ctrl+c");
    EXPECT_EQ(seen(), Messages{key_message("release", KEY_C, "c", CONTROL)});
}

TEST_F(Input, before_loading_and_after_reset_is_ignored)
{
    HostView empty;
    view->reset();
    for (HostView* without_scene : {&empty, &view}) {
        MView& facade = without_scene->facade();
        facade.mouse_click(LEFT, PRESS, 10, 20);
        facade.mouse_click(LEFT, RELEASE, 10, 20);
        facade.mouse_move(30, 40);
        facade.mouse_wheel_down(10, 20);
        facade.mouse_wheel_up(10, 20);
        facade.key_event(KEY_A, PRESS, "a");
        facade.key_event(KEY_A, RELEASE, "a");
        EXPECT_EQ(without_scene->console().take_messages(), Messages());
        ASSERT_TRUE(without_scene->load("InputProbe"));
        facade.mouse_click(LEFT, PRESS, 10, 20);
        EXPECT_EQ(without_scene->console().take_messages(),
                  Messages{"press 10,20 button=1 buttons=1 modifiers=0"});
    }
}

}  // namespace

}  // namespace marlune::test
