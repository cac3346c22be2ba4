#pragma once

#include <QApplication>

namespace marlune {

/** The application object. Exceptions of the calls that the loop serves end here, and the loop goes on. */
class Application : public QApplication {
    Q_OBJECT

public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace marlune
