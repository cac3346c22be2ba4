#include "support/clips.h"

#include <QString>
#include <QUrl>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace marlune::bench {

std::string clip_url(const std::string& name)
{
    constexpr auto make = "bash '" MARLUNE_MAKE_CLIPS "' '" MARLUNE_CLIPS "'";
    if (std::system(make) != 0)
        throw std::runtime_error(std::string("the clips cannot be made: ") + make);
    return QUrl::fromLocalFile(QString::fromStdString(MARLUNE_CLIPS "/" + name))
        .toString(QUrl::FullyEncoded)
        .toStdString();
}

}  // namespace marlune::bench
