#pragma once

#include "ours/page.h"
#include "ours/view.h"
#include "raw/page.h"

#include <marlune/app.h>

#include <QObject>

#include <stdexcept>
#include <string>

namespace marlune::bench {

/** Takes the page's next message, which must be this one. */
template <typename Page>
void expect_message(Page& page, const std::string& message)
{
    const std::string sent = page.answers().wait_for_message();
    if (sent != message)
        throw std::runtime_error("a page has sent \"" + sent + "\" for \"" + message + '"');
}

/** The same page on both sides, each with its own scheme. In the process of the running library. */
struct WebPages {
    WebPages(Gpu& gpu, Picture picture, const std::string& file)
        : library(gpu, picture, url_of<BenchPage>(file)),
          raw(static_cast<QObject*>(MARLUNE_CTX), gpu, picture, url_of<RawPage>(file))
    {
        start(library);
        start(raw);
    }

    BenchPage library;
    RawPage raw;

private:
    template <typename Page>
    static std::string url_of(const std::string& file)
    {
        return std::string(Page::origin) + '/' + file;
    }

    template <typename Page>
    static void start(Page& page)
    {
        expect_message(page, "loaded");
        // Both sides have drawn a frame with the page.
        wait_for_next_frame();
        page.render();
    }
};

}  // namespace marlune::bench
