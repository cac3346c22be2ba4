#pragma once

#include "marlune/app.h"
#include "runtime/call.h"
#include "runtime/context.h"

namespace marlune {

class View;

/** Keeps a view for the life of the process: where nothing points to it, it would be taken for a leak. */
void keep_for_good(View* view);

/**
 * What each facade's constructor does: waits for the Qt thread and has its view made there, without a
 * parent. Null once the library has stopped. The view that the constructor of a base has made before,
 * if any, stays idle from then on, and nobody's.
 */
template <typename ViewKind>
View* make_view(const char* facade, const char* factory, View* of_base = nullptr)
{
    M::ensure_qt_eventloop_is_running();
    return call<MarluneCtx>(facade, static_cast<QObject*>(MARLUNE_CTX), Delivery::Blocking,
                            static_cast<View*>(nullptr), [factory, of_base](MarluneCtx&) -> View* {
                                trace(factory, "T");
                                keep_for_good(of_base);
                                return new ViewKind;
                            });
}

}  // namespace marlune
