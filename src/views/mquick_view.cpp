#include "marlune/quick_view.h"

#include "marlune/app.h"
#include "runtime/call.h"
#include "views/quick_view.h"
#include "views/view_factory.h"

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
    return call<QuickView>("marlune::MQuickView::load", view_, Delivery::Blocking, false,
                           [module = std::move(module), name = std::move(name)](QuickView& view) {
                               return view.load(QString::fromStdString(module),
                                                QString::fromStdString(name));
                           });
}

}  // namespace marlune
