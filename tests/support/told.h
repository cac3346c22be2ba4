#pragma once

#include "support/fill_slot.h"

#include <QDebug>
#include <QString>

#include <utility>

namespace marlune::test {

/** What the host is told through the slots of a view, as text. Stands for as long as they do. */
class Told {
public:
    template <typename Slot>
    void follow(Slot& slot, const char* name)
    {
        fill(slot, [this, name](const auto&... value) {
            QDebug stream(&text_);
            stream.noquote() << name;
            ((stream << value), ...);
        });
    }

    /** Since the last time. */
    QString take() { return std::exchange(text_, QString()).trimmed(); }

private:
    QString text_;
};

}  // namespace marlune::test
