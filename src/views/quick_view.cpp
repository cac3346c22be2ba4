#include "views/quick_view.h"

#include "runtime/trace.h"

#include <QDebug>
#include <QQmlContext>

namespace marlune {

void QuickView::prepare_context(QQmlContext* root_context)
{
    root_context->setContextProperty(QStringLiteral("ctx"), this);
}

bool QuickView::load(const QString& module, const QString& name)
{
    trace("QuickView::load()", "T");
    if (module == u"Web") {
        qCritical("cannot load component by module name Web");
        return false;
    }
    return load_module(module, name);
}

}  // namespace marlune
