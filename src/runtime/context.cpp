#include "runtime/context.h"

#include "marlune/app.h"

#include <QTimer>

#include <chrono>

namespace marlune {

void* MARLUNE_CTX = nullptr;

}  // namespace marlune

MarluneCtx::MarluneCtx()
{
    using namespace std::chrono_literals;
    QTimer::singleShot(10ms, this, [this] { event_loop_started = 1; });
}
