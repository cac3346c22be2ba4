#include "runtime/application.h"

#include "runtime/qt_thread.h"
#include "runtime/report_exception.h"

#include <QChildEvent>

namespace marlune {

namespace {

Application::ChildWatcher child_watcher = nullptr;

}  // namespace

void Application::set_child_watcher(ChildWatcher watcher)
{
    child_watcher = watcher;
}

bool Application::notify(QObject* receiver, QEvent* event)
{
    try {
        if (event->type() == QEvent::ChildAdded && on_qt_thread() && child_watcher)
            child_watcher(receiver, static_cast<QChildEvent*>(event)->child());
        return QApplication::notify(receiver, event);
    } catch (...) {
        report_exception(receiver);
    }
    return false;
}

}  // namespace marlune
