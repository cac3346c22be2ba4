#pragma once

#include "marlune/app.h"
#include "runtime/call.h"
#include "runtime/context.h"

namespace marlune {

class View;

/**
 * What each facade's constructor does: waits for the Qt thread and has its view made there, without a
 * parent. Null once the library has stopped.
 */
template <typename ViewKind>
View* make_view(const char* facade, const char* factory)
{
    M::ensure_qt_eventloop_is_running();
    return call<MarluneCtx>(facade, static_cast<QObject*>(MARLUNE_CTX), Delivery::Blocking,
                            static_cast<View*>(nullptr), [factory](MarluneCtx&) -> View* {
                                trace(factory, "T");
                                return new ViewKind;
                            });
}

}  // namespace marlune
