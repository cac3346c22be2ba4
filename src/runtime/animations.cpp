#include "runtime/animations.h"

#include <QtQml/private/qabstractanimationjob_p.h>

namespace marlune {

void end_animations()
{
    // With the thread, Qt ends first the clock of all timers and then this one. Where it still ran, it
    // would stop itself at the clock that is gone, which Qt 6.11 does not survive.
    if (QQmlAnimationTimer* const timer = QQmlAnimationTimer::instance(false))
        QUnifiedTimer::stopAnimationTimer(timer);
}

}  // namespace marlune
