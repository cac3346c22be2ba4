#include "runtime/application.h"

#include "runtime/live_objects.h"
#include "runtime/qt_thread.h"

#include <QChildEvent>
#include <QDebug>

#include <exception>
#include <string>

namespace marlune {

namespace {

Application::ChildWatcher child_watcher = nullptr;

/** Of the one that is being handled. */
std::string text_of_exception(const char* unknown)
{
    try {
        throw;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return unknown;
    }
}

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

void report_exception(QObject* receiver, const char* unknown)
{
    // The receiver may have gone down with the call.
    const bool named =
        LiveObjects::instance().contains(receiver) && !receiver->objectName().isEmpty();
    const QString name = named ? receiver->objectName() : QStringLiteral("marlune");
    qCritical("%s: %s (the call was aborted and returns its default)", qUtf8Printable(name),
              text_of_exception(unknown).c_str());
}

}  // namespace marlune
