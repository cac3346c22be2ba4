#pragma once

#include "marlune/app.h"
#include "runtime/call.h"
#include "runtime/context.h"
#include "runtime/qt_thread.h"

namespace marlune {

class View;

/** Keeps a pointer to a view that is never destroyed, so that leak checkers do not report it. */
void leak_intentionally(View* view);

/**
 * Called by each facade's constructor: waits for the Qt thread and creates its view there, without
 * a parent. Null after the library has stopped. The view that the constructor of a base class has
 * created, if any, stays unused.
 */
template <typename ViewKind>
View* make_view(const char* facade, const char* factory, View* of_base = nullptr)
{
    QtThread::instance().wait_until_ready();
    return call<MarluneCtx>(facade, static_cast<QObject*>(MARLUNE_CTX), WaitFor::Cleanup,
                            static_cast<View*>(nullptr), [factory, of_base](MarluneCtx&) -> View* {
                                trace(factory, "T");
                                leak_intentionally(of_base);
                                return new ViewKind;
                            });
}

}  // namespace marlune
