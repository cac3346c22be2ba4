#pragma once

#include <QApplication>

namespace marlune {

/** The application object. Catches what the event loop's calls throw, so that the loop goes on. */
class Application : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

    /**
     * Registers a function that the Qt thread calls for each child that is added to an object. An
     * event filter of the application would not do: Qt calls those only on the thread that was the
     * first to use Qt, which may be one of the host's.
     */
    using ChildWatcher = void (*)(QObject* parent, QObject* child);
    static void set_child_watcher(ChildWatcher watcher);

    bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace marlune
