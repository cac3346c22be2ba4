#include "marlune/app.h"

#include "library/shutdown.h"
#include "library/startup.h"
#include "runtime/qt_thread.h"
#include "runtime/trace.h"
#include "runtime/version.h"

#include <QApplication>

#include <atomic>
#include <cstdio>

namespace marlune {

M* MARLUNE = nullptr;
void* MARLUNE_APP = nullptr;

M& M::operator=(const M&)
{
    return *this;
}

M& M::operator=(M&&)
{
    return *this;
}

void M::create_app()
{
    trace("marlune::create_app", "M");
    if (std::atomic_ref(MARLUNE).load(std::memory_order_acquire)) {
        std::fprintf(stderr, "application is already constructed\n");
        std::fflush(stderr);
        return;
    }
    shutdown::prepare_process();
    QtThread::instance().start(_create_app);
}

void M::_create_app()
{
    trace("marlune::_create_app()", "T");
    if (!QtThread::instance().enter())
        return;
    shutdown::prepare_process();
    startup::start();
    trace("marlune::_create_app", "T");
    trace("static_cast<QApplication*>(MARLUNE_APP)->exec()", "T");
    QApplication::exec();
    shutdown::stop();
    QtThread::instance().leave();
}

void M::ensure_qt_eventloop_is_running()
{
    trace("marlune::qt_is_running?", "M");
    QtThread::instance().wait_until_ready();
}

void M::processEvents()
{
    trace("marlune::processEvents", "M");
    QCoreApplication::processEvents();
}

void M::destroy()
{
    trace("marlune::destroy", "M");
    if (on_qt_thread())
        QCoreApplication::quit();
    else
        shutdown::request_and_wait();
}

std::string M::get_version_full()
{
    trace("marlune::get_version_full", "M");
    return full_version;
}

void M::set_ffmpeg_debug(bool)
{
    trace("marlune::set_ffmpeg_debug", "M");
    // The interface requires it. The option FFMPEG_DEBUG is read once, at the start.
}

void M::set_ffmpeg_protocol_whitelist(std::string)
{
    trace("marlune::set_ffmpeg_protocol_whitelist", "M");
    // The interface requires it. The library does not read the list.
}

}  // namespace marlune
