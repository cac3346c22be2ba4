#include "support/media/screen_server.h"

#include "support/process/processes.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <stdexcept>

namespace marlune::test {

namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

using Edid = std::array<uint8_t, 128>;

/** One of the EDID's four text fields; a text that does not fill it ends with a line feed. */
void set_text(Edid& edid, size_t place, uint8_t kind, const std::string& text)
{
    constexpr size_t FIRST_PLACE = 54, PLACE_SIZE = 18, TEXT_AT = 5, LONGEST_TEXT = 13;
    const auto descriptor = edid.begin() + FIRST_PLACE + place * PLACE_SIZE;
    descriptor[3] = kind;
    const std::string line = text + '\n';
    std::copy_n(line.begin(), std::min(line.size(), LONGEST_TEXT), descriptor + TEXT_AT);
}

Edid edid_of(const Monitor& monitor)
{
    constexpr uint8_t SERIAL_NUMBER = 0xff, MODEL = 0xfc;
    Edid edid = {0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0};
    const std::array<uint8_t, 2> version{1, 3};
    const std::array<uint8_t, 10> srgb{0xee, 0x91, 0xa3, 0x54, 0x4c, 0x99, 0x26, 0x0f, 0x50, 0x54};
    std::ranges::copy(version, edid.begin() + 18);
    std::ranges::copy(srgb, edid.begin() + 25);
    set_text(edid, 0, MODEL, monitor.model);
    set_text(edid, 1, SERIAL_NUMBER, monitor.serial_number);
    const int sum = std::accumulate(edid.begin(), edid.end(), 0);
    edid.back() = uint8_t(-sum);
    return edid;
}

}  // namespace

ScreenServer::ScreenServer(const Options& options)
{
    start(options);
    connect();
    if (!options.monitors.empty())
        ask_for_randr();
    for (const Monitor& monitor : options.monitors)
        add(monitor);
}

ScreenServer::~ScreenServer()
{
    xcb_disconnect(connection_);
    end_program(server_);
}

void ScreenServer::start(const Options& options)
{
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("there is no pipe");
    std::vector<std::string> arguments{"Xvfb",      "-displayfd", "1",       "-noreset",
                                       "-nolisten", "tcp",        "-screen", "0"};
    arguments.push_back(std::to_string(options.width) + 'x' + std::to_string(options.height)
                        + "x24");
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    server_ = start_program(arguments, ends[1]);
    close(ends[1]);

    // The server writes its number and a line feed once it accepts connections.
    std::string number;
    char character = 0;
    while (read(ends[0], &character, 1) == 1 && character != '\n')
        number += character;
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("the X server does not start: is xvfb installed?");
    display_ = ":" + number;
    setenv("DISPLAY", display_.c_str(), 1);
    // With these variables Qt captures as on a desktop.
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("XDG_SESSION_TYPE", "x11", 1);
}

void ScreenServer::connect()
{
    connection_ = xcb_connect(display_.c_str(), nullptr);
    if (xcb_connection_has_error(connection_))
        throw std::runtime_error("the X server cannot be connected to");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

void ScreenServer::ask_for_randr()
{
    // The server answers requests about monitors only to clients that have requested version 1.5.
    const Owned<xcb_randr_query_version_reply_t> version(xcb_randr_query_version_reply(
        connection_, xcb_randr_query_version(connection_, 1, 5), nullptr));
}

uint32_t ScreenServer::atom(const std::string& name)
{
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, false, uint16_t(name.size()), name.c_str()),
        nullptr));
    if (!reply)
        throw std::runtime_error("the X server gives no atom for " + name);
    return reply->atom;
}

uint32_t ScreenServer::only_output()
{
    const Owned<xcb_randr_get_screen_resources_reply_t> resources(
        xcb_randr_get_screen_resources_reply(
            connection_, xcb_randr_get_screen_resources(connection_, screen_->root), nullptr));
    if (!resources || resources->num_outputs != 1)
        throw std::runtime_error("the X server does not have one output");
    return *xcb_randr_get_screen_resources_outputs(resources.get());
}

void ScreenServer::describe(uint32_t output, const Monitor& monitor)
{
    const Edid edid = edid_of(monitor);
    xcb_randr_change_output_property(connection_, output, atom("EDID"), XCB_ATOM_INTEGER, 8,
                                     XCB_PROP_MODE_REPLACE, edid.size(), edid.data());
}

void ScreenServer::add(const Monitor& monitor)
{
    struct {
        xcb_randr_monitor_info_t info = {};
        xcb_randr_output_t output = XCB_NONE;
    } request;
    request.info.name = atom(monitor.name);
    request.info.primary = monitor.primary;
    request.info.x = int16_t(monitor.area.x);
    request.info.y = int16_t(monitor.area.y);
    request.info.width = uint16_t(monitor.area.width);
    request.info.height = uint16_t(monitor.area.height);
    if (!monitor.model.empty()) {
        request.info.nOutput = 1;
        request.output = only_output();
        describe(request.output, monitor);
    }
    xcb_randr_set_monitor(connection_, screen_->root, &request.info);
    finish("the X server does not add the monitor");
}

void ScreenServer::take_away(const std::string& monitor)
{
    xcb_randr_delete_monitor(connection_, screen_->root, atom(monitor));
    // Removing a real panel changes the desktop's size, by which programs notice it. This monitor
    // has no panel.
    xcb_configure_notify_event_t event = {};
    event.response_type = XCB_CONFIGURE_NOTIFY;
    event.event = event.window = screen_->root;
    event.width = screen_->width_in_pixels;
    event.height = screen_->height_in_pixels;
    xcb_send_event(connection_, false, screen_->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    finish("the X server does not remove the monitor");
}

void ScreenServer::paint(Rect area, Colour colour)
{
    const xcb_window_t window = xcb_generate_id(connection_);
    // Without a window manager the server uses the values unchanged.
    const std::array<uint32_t, 2> values{
        uint32_t(colour.r) << 16 | uint32_t(colour.g) << 8 | colour.b, true};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, int16_t(area.x),
                      int16_t(area.y), uint16_t(area.width), uint16_t(area.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
    xcb_map_window(connection_, window);
    finish("the X server creates no window");
}

/** Waits until the server has processed all requests. Throws `what` if one has failed. */
void ScreenServer::finish(const char* what)
{
    const Owned<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    const Owned<xcb_generic_event_t> error(xcb_poll_for_event(connection_));
    constexpr uint8_t ERROR = 0;
    if (!reply || (error && error->response_type == ERROR))
        throw std::runtime_error(what);
}

}  // namespace marlune::test
