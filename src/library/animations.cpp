#include "library/animations.h"

#include <QtQml/private/qabstractanimationjob_p.h>

namespace marlune {

void end_animations()
{
    // At the end of the thread Qt destroys QUnifiedTimer before this timer, which unregisters
    // itself there if it is running. Qt 6.11 crashes then.
    if (QQmlAnimationTimer* const timer = QQmlAnimationTimer::instance(false))
        QUnifiedTimer::stopAnimationTimer(timer);
}

}  // namespace marlune
