#pragma once

#include "views/view.h"

namespace marlune {

/** The view that shows a component of one of the library's own QML modules. */
class QuickView : public View {
    Q_OBJECT

public:
    explicit QuickView(const char* kind = "QuickView") : View(kind) {}

    void prepare_context(QQmlContext* root_context) override;

    /** False or an exception on failure. The module "Web" is for web views alone. */
    bool load(const QString& module, const QString& name);
};

}  // namespace marlune
