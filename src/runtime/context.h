#pragma once

#include "runtime/live_objects.h"

#include <QObject>

/**
 * The object that calls are carried to before any view exists. Lives on the Qt thread for good.
 * In the global namespace, so that its meta-object answers to its bare name.
 */
class MarluneCtx : public QObject {
    Q_OBJECT

public:
    MarluneCtx();

    /** 1 from the first turn of the event loop on. For a debugger: readiness is MARLUNE_CTX. */
    qint32 event_loop_started = 0;

private:
    marlune::LiveObject live_{this};
};
