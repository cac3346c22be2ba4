#pragma once

#include <QApplication>

namespace marlune {

/** The application object. Exceptions of the calls that the loop serves end here, and the loop goes on. */
class Application : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

    /**
     * Sets who is told, on the Qt thread, of each child that an object there gets. An event filter of the
     * application would not do: Qt asks those on the thread only that was the first to use Qt, which
     * may be one of the host's.
     */
    using ChildWatcher = void (*)(QObject* parent, QObject* child);
    static void set_child_watcher(ChildWatcher watcher);

    bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace marlune
