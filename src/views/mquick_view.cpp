#include "marlune/mquick_view.h"

#include "marlune/app.h"
#include "runtime/facade_call.h"
#include "views/quick_view.h"
#include "views/view_factory.h"

#include <utility>

namespace marlune {

MQuickView::MQuickView()
{
    view_ = make_view<QuickView>("marlune::MQuickView", "marlune::_create_quickview");
}

void MQuickView::reset() const
{
    MView::reset();
}

bool MQuickView::load(std::string module, std::string name) const
{
    return complete(view_, false, &QuickView::load, std::move(module), std::move(name));
}

}  // namespace marlune
