// Compares the library with raw Qt that does the same, and prints one table:
//
//     marlune-bench [--only GROUP] [--quick] [--verbose]
//
// The groups are start, memory, calls, frames, views, web-calls, web-scheme, web-frames, video,
// video-calls and screen; "web" selects the three groups whose names begin with it, and "video"
// selects both of its groups.
//
// The project root, which contains Qt's files, is read from MARLUNE_PROJECT_ROOT.

#include "measures/measures.h"
#include "ours/view.h"
#include "raw/scheme.h"
#include "support/fresh_process.h"
#include "support/screen_painter.h"

#include <marlune/app.h>

#include <QObject>
#include <QString>
#include <QtLogging>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

namespace marlune::bench {

namespace {

struct Arguments {
    std::string only;
    std::string sample;
    Effort effort;
    bool verbose = false;

    bool want(std::string_view group) const
    {
        return only.empty() || only == group || group.starts_with(only + '-');
    }
};

Arguments parse(int count, char** values)
{
    Arguments arguments;
    for (int i = 1; i < count; ++i) {
        const std::string_view word = values[i];
        const bool has_value = i + 1 < count;
        if (word == "--only" && has_value)
            arguments.only = values[++i];
        else if (word == "--sample" && has_value)
            arguments.sample = values[++i];
        else if (word == "--quick")
            arguments.effort.quick = true;
        else if (word == "--verbose")
            arguments.verbose = true;
        else
            throw std::invalid_argument("cannot understand " + std::string(word));
    }
    return arguments;
}

/** Suppresses harmless warnings, which each of the dozens of starts causes. */
void report_errors_only(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
}

// Benchmarks with processes of their own run first: the library changes the environment.
void measure_processes(Table& table, const Arguments& arguments)
{
    if (arguments.want("start")) {
        measure_start(table, arguments.effort);
        measure_page_start(table, arguments.effort);
    }
    if (arguments.want("memory")) {
        measure_memory(table, arguments.effort);
        measure_page_memory(table, arguments.effort);
    }
}

// The benchmarks in this process, in this order.
constexpr struct {
    const char* name;
    void (*measure)(Table& table, Effort effort, Gpu& gpu);
} groups[] = {
    {"calls", measure_calls},           {"frames", measure_frames},
    {"views", measure_views},           {"web-calls", measure_web_calls},
    {"web-scheme", measure_web_scheme}, {"web-frames", measure_web_frames},
    {"video", measure_video},           {"video-calls", measure_video_calls},
    {"screen", measure_screen},
};

void measure_here(Table& table, const Arguments& arguments)
{
    register_raw_scheme();
    Gpu gpu;
    const Library library;
    M::ensure_qt_eventloop_is_running();
    install_raw_scheme(static_cast<QObject*>(MARLUNE_CTX));
    for (const auto& [name, measure] : groups) {
        if (arguments.want(name))
            measure(table, arguments.effort, gpu);
    }
}

}  // namespace

int run(const Arguments& arguments)
{
    if (!arguments.verbose)
        qInstallMessageHandler(report_errors_only);
    if (!arguments.sample.empty())
        return print_sample(arguments.sample.c_str()) ? 0 : 1;

    Table table;
    measure_processes(table, arguments);
    measure_here(table, arguments);
    if (table.empty())
        throw std::invalid_argument("there is no measure " + arguments.only);
    table.print();
    return 0;
}

}  // namespace marlune::bench

int main(int argc, char** argv)
{
    try {
        if (argc == 2 && std::string_view(argv[1]) == "--paint-screen")
            return marlune::bench::paint_screen(argc, argv);
        return marlune::bench::run(marlune::bench::parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "marlune-bench: %s\n", error.what());
        return 1;
    }
}
