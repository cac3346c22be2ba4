#pragma once

#include "views/view.h"

namespace marlune {

/** A view of a component of one of the library's QML modules. */
class QuickView : public View {
    Q_OBJECT

public:
    explicit QuickView(const char* kind = "QuickView") : View(kind) {}

    void prepare_context(QQmlContext* root_context) override;

    /** Returns false or throws on failure. Refuses the module "Web", which needs a web view. */
    bool load(const QString& module, const QString& name);
};

}  // namespace marlune
