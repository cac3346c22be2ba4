#include "views/view_factory.h"

#include <vector>

namespace marlune {

void leak_intentionally(View* view)
{
    static auto* const views = new std::vector<View*>;
    if (view)
        views->push_back(view);
}

}  // namespace marlune
