#pragma once

#include "support/image.h"

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;
struct xcb_screen_t;

namespace marlune::test {

/** A part of the desktop that counts as one screen. */
struct Monitor {
    std::string name;
    Rect area;
    bool primary = false;
    // The panel's own data, its EDID. One monitor of a server has it: the monitor of the server's
    // only output, which would otherwise be an additional screen.
    std::string model = {};
    std::string serial_number = {};
};

/**
 * An X server of this process, whose desktop only the test draws on. It replaces the system's X
 * server from its construction on: create it before the library starts, and keep it until the
 * library has stopped. Throws std::runtime_error if it cannot start.
 *
 * Several screens are RandR monitors on one X screen, like the panels of a real desktop; Qt lists
 * each as a screen. With `-screen 1` the server would have two X screens instead, with the same
 * name and the same position, and with `+xinerama` it reports only one screen.
 */
class ScreenServer {
public:
    struct Options {
        uint32_t width = 640, height = 480;
        std::vector<Monitor> monitors;            // empty: the desktop is one screen
        std::vector<std::string> arguments = {};  // additional arguments of the server
    };

    explicit ScreenServer(const Options& options);
    ~ScreenServer();
    ScreenServer(const ScreenServer&) = delete;
    ScreenServer& operator=(const ScreenServer&) = delete;

    /** Creates a window of one colour above all others. Returns once the server shows it. */
    void paint(Rect area, Colour colour);

    /** Removes a monitor, as if its plug had been pulled. */
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
