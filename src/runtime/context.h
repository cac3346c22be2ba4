#pragma once

#include "runtime/live_objects.h"

#include <QObject>

/**
 * Receives the calls that are posted before any view exists. Lives on the Qt thread and is never
 * destroyed. In the global namespace, so that its meta-object has the bare name.
 */
class MarluneCtx : public QObject {
    Q_OBJECT

public:
    MarluneCtx();

    /** 1 once the event loop has run. For debuggers; readiness is MARLUNE_CTX. */
    qint32 event_loop_started = 0;

private:
    marlune::LiveObject live_{this};
};
