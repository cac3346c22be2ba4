#pragma once

#include "support/image.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;
struct xcb_screen_t;

namespace marlune::test {

/** A part of the desktop that is a screen of its own. */
struct Monitor {
    std::string name;
    Rect area;
    bool primary = false;
    // What the panel itself tells, by its EDID. One monitor of a server has it: the one to which its only
    // output goes, which would be a screen by itself otherwise.
    std::string model = {};
    std::string serial_number = {};
};

/**
 * An X server of this process's own, whose desktop only the test draws on. It stands in for the
 * system's from its construction on: make it before the library starts, and keep it until that has been
 * stopped. Throws std::runtime_error when it cannot be started.
 *
 * Several screens are RandR monitors on one X screen, as the panels of a real desktop are; Qt takes each
 * for a screen. With `-screen 1` the server would have two X screens instead, which bear the same name
 * and are at the same place, and with `+xinerama` it tells of one screen only.
 */
class ScreenServer {
public:
    struct Options {
        uint32_t width = 640, height = 480;
        std::vector<Monitor> monitors;            // none: the desktop is one screen
        std::vector<std::string> arguments = {};  // more of them for the server
    };

    explicit ScreenServer(const Options& options);
    ~ScreenServer();
    ScreenServer(const ScreenServer&) = delete;
    ScreenServer& operator=(const ScreenServer&) = delete;

    /** Puts a window of one colour on the desktop, above all others. There once it returns. */
    void paint(Rect area, Colour colour);

    /** As if somebody had pulled its plug. */
    void take_away(const std::string& monitor);

private:
    void start(const Options& options);
    void connect();
    void ask_for_randr();
    void add(const Monitor& monitor);
    uint32_t atom(const std::string& name);
    uint32_t only_output();
    void describe(uint32_t output, const Monitor& monitor);
    void finish(const char* what);

    pid_t server_ = -1;
    std::string display_;
    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
};

}  // namespace marlune::test
