#include "support/message_log.h"

#include "support/wait.h"

#include <QtCore/qlogging.h>
#include <QtCore/qstring.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <regex>
#include <vector>

namespace marlune::test {

namespace {

// Messages that any run may write.
const std::array KNOWN_MESSAGES = {
    // By design, the Qt thread is not the thread of main(); Qt reports that once.
    std::regex("QApplication was not created in the main\\(\\) thread"),
    // Qt adopts the host's instance as it is, with or without surface extensions.
    std::regex("Failed to find vk\\w*Surface\\w*"),
    // The web engine was stopped while one of its processes was still starting.
    std::regex("zygote_linux\\.cc.*Broken pipe"),
    // A machine without D-Bus; the web engine of newer Qt versions reports it.
    std::regex("dbus/bus\\.cc.*Failed to connect to the bus"),
    // The web engine of Qt 6.11 sometimes receives an update about the GPU before it has
    // initialized.
    std::regex("^GPUInfo not initialized on GpuInfoUpdate$"),
    // A machine without a sound server; a video player keeps its pace without one.
    std::regex("^PulseAudioService: pa_context_connect\\(\\) failed$"),
    std::regex("^No audio device detected$"),
    // Matroska has one duration for all of its streams; Qt then uses that one.
    std::regex("^AVStream duration -\\d+ is invalid. Taking it from the metadata$"),
    // A view that does not override post_setup() reports it at each load.
    std::regex("^post_setup is virtual$"),
};

struct Expectation {
    std::string text;
    bool is_regex = false;
    bool came = false;

    bool fits(const std::string& message) const
    {
        return is_regex ? std::regex_search(message, std::regex(text)) : message == text;
    }
};

struct Log {
    std::mutex mutex;
    std::vector<Expectation> expected;
    std::vector<std::regex> allowed;
    std::vector<std::string> surplus;  // unexpected messages
};

Log& message_log()
{
    static Log log;
    return log;
}

template <typename Patterns>
bool any_matches(const Patterns& patterns, const std::string& message)
{
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::regex& pattern) {
        return std::regex_search(message, pattern);
    });
}

void judge(const std::string& message)
{
    Log& log = message_log();
    const std::lock_guard lock(log.mutex);
    const auto waiting = std::find_if(log.expected.begin(), log.expected.end(),
                                      [&](const auto& e) { return !e.came && e.fits(message); });
    if (waiting != log.expected.end())
        waiting->came = true;
    else if (!is_known_message(message) && !any_matches(log.allowed, message))
        log.surplus.push_back(message);
}

void on_message(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg)
        judge(text.toStdString());
}

void expect(Expectation expectation)
{
    Log& log = message_log();
    const std::lock_guard lock(log.mutex);
    log.expected.push_back(std::move(expectation));
}

}  // namespace

void install_message_log()
{
    qInstallMessageHandler(on_message);
}

void expect_message(const std::string& text)
{
    expect({.text = text});
}

void expect_message_matching(const std::string& regex)
{
    expect({.text = regex, .is_regex = true});
}

void allow_messages_matching(const std::string& regex)
{
    Log& log = message_log();
    const std::lock_guard lock(log.mutex);
    log.allowed.emplace_back(regex);
}

bool is_known_message(const std::string& text)
{
    return any_matches(KNOWN_MESSAGES, text);
}

bool all_expected_messages_came()
{
    Log& log = message_log();
    const std::lock_guard lock(log.mutex);
    return std::all_of(log.expected.begin(), log.expected.end(),
                       [](const Expectation& expectation) { return expectation.came; });
}

void check_messages()
{
    wait_until(all_expected_messages_came, std::chrono::seconds(3));
    Log& log = message_log();
    const std::lock_guard lock(log.mutex);
    for (const Expectation& expectation : log.expected) {
        if (!expectation.came)
            ADD_FAILURE() << "expected message never arrived: " << expectation.text;
    }
    for (const std::string& message : log.surplus)
        ADD_FAILURE() << "unexpected message: " << message;
    log.expected.clear();
    log.allowed.clear();
    log.surplus.clear();
}

}  // namespace marlune::test
