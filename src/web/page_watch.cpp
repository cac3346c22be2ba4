#include "web/page_watch.h"

#include "runtime/platform.h"

#include <QCoreApplication>

namespace marlune {

PageWatch::PageWatch(QObject* parent, std::chrono::milliseconds interval) : QObject(parent)
{
    timer_.setInterval(interval);
    connect(&timer_, &QTimer::timeout, this, &PageWatch::ask);
}

void PageWatch::set_active(bool active)
{
    if (active == is_active())
        return;
    if (active)
        timer_.start();
    else
        timer_.stop();
    answer();
}

void PageWatch::answer()
{
    unanswered_ = 0;
    set_hanging(false);
}

void PageWatch::end_process(qlonglong id)
{
    // The process may have ended by now. It can also be the game's own, since engines can be
    // configured to use that.
    if (id > 0 && id != QCoreApplication::applicationPid())
        platform::end_process(id);
}

void PageWatch::ask()
{
    // A hanging page gets no further requests, which would only accumulate.
    if (hanging_)
        return;
    if (unanswered_ == PATIENCE)
        return set_hanging(true);
    ++unanswered_;
    emit asked();
}

void PageWatch::set_hanging(bool hanging)
{
    if (hanging == hanging_)
        return;
    hanging_ = hanging;
    emit hangingChanged(hanging);
}

}  // namespace marlune
