#include "raw/service.h"

#include <QString>

namespace marlune::bench {

int RawService::add(int number)
{
    answers_.add_call();
    return number + 1;
}

void RawService::set_number(int number)
{
    if (number == number_)
        return;
    number_ = number;
    emit number_changed(number_);
}

void RawService::take_message(int level, const QString& message)
{
    answers_.add_message(level, message.toStdString());
}

}  // namespace marlune::bench
