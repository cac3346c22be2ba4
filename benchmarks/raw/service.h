#pragma once

#include "support/page_answers.h"

#include <QObject>

namespace marlune::bench {

/**
 * The object of a raw page's host, on a channel of Qt: the same object as the library's page has.
 */
class RawService : public QObject {
    Q_OBJECT
    Q_PROPERTY(int number READ number WRITE set_number NOTIFY number_changed FINAL)

public:
    explicit RawService(PageAnswers& answers) : answers_(answers) {}

    Q_INVOKABLE int add(int number);

    int number() const { return number_; }
    void set_number(int number);

    /** For the scene, which passes on the values that its page has written. */
    Q_INVOKABLE void take_message(int level, const QString& message);

signals:
    void tick(int number);
    void number_changed(int number);

private:
    PageAnswers& answers_;
    int number_ = 0;
};

}  // namespace marlune::bench
