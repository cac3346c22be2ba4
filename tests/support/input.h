#pragma once

#include <cstdint>

namespace marlune::test {

/** Numbers of Qt::Key. Letters and digits have the numbers of their upper-case characters. */
enum Key : uint32_t {
    KEY_ESCAPE = 0x01000000,
    KEY_TAB = 0x01000001,
    KEY_BACKTAB = 0x01000002,  // Tab with Shift
    KEY_BACKSPACE = 0x01000003,
    KEY_ENTER = 0x01000004,  // the one beside the letters: Qt::Key_Return
    KEY_DELETE = 0x01000007,
    KEY_HOME = 0x01000010,
    KEY_END = 0x01000011,
    KEY_LEFT = 0x01000012,
    KEY_UP = 0x01000013,
    KEY_RIGHT = 0x01000014,
    KEY_DOWN = 0x01000015,
    KEY_PAGE_UP = 0x01000016,
    KEY_PAGE_DOWN = 0x01000017,
    KEY_SHIFT = 0x01000020,
    KEY_CONTROL = 0x01000021,
    KEY_ALT = 0x01000023,
    KEY_SPACE = 0x20,
};

enum MouseButton : uint16_t {
    LEFT_BUTTON,
    RIGHT_BUTTON,
    MIDDLE_BUTTON,
    BACK_BUTTON,
    FORWARD_BUTTON,
};

}  // namespace marlune::test
