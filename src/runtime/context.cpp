#include "runtime/context.h"

#include <QTimer>

#include <chrono>

MarluneCtx::MarluneCtx()
{
    using namespace std::chrono_literals;
    QTimer::singleShot(10ms, this, [this] { event_loop_started = 1; });
}
