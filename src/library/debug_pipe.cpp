#include "library/debug_pipe.h"

#include <chrono>
#include <iostream>
#include <thread>
#include <utility>

namespace marlune {

namespace {

void report_failure(const char* what)
{
    const long code = platform::last_error();  // before printing, which may change it
    std::cerr << what << " Error: " << code << std::endl;
}

}  // namespace

void DebugPipeWriter::enqueue(std::string message)
{
    const std::lock_guard lock(mutex_);
    pending_.push_back(std::move(message));
}

void DebugPipeWriter::write_pending()
{
    std::vector<std::string> messages;
    {
        const std::lock_guard lock(mutex_);
        messages.swap(pending_);
    }
    for (const std::string& message : messages) {
        if (pipe_ == platform::no_pipe)
            std::cerr << "Pipe not connected.\n";
        else if (!platform::write_debug_pipe(pipe_, message))
            report_failure("Write failed.");
    }
}

void DebugPipeWriter::run()
{
    using namespace std::chrono_literals;
    for (;;) {
        std::this_thread::sleep_for(200ms);
        write_pending();
    }
}

void start_debug_pipe()
{
    const auto pipe = platform::open_debug_pipe();
    if (pipe == platform::no_pipe) {
        report_failure("Failed to connect to named pipe.");
        return;
    }
    // Never destroyed: its thread runs until the process ends.
    auto* const writer = new DebugPipeWriter(pipe);
    std::thread([writer] { writer->run(); }).detach();
}

}  // namespace marlune
