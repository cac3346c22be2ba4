#include "media/media_view.h"

#include "runtime/media_part.h"
#include "views/component_files.h"

#include <QObject>
#include <QPointer>
#include <QQmlContext>

#include <utility>
#include <vector>

namespace marlune {

namespace {

// Numbers of VideoOutput's fill modes, but for the first, which hosts may set all the same.
constexpr int lowest_fill_mode = -1;
constexpr int highest_fill_mode = 2;

std::vector<QPointer<QObject>> ending_objects;

}  // namespace

void end_with_library(QObject* object)
{
    std::erase_if(ending_objects, [](const QPointer<QObject>& former) { return !former; });
    ending_objects.emplace_back(object);
}

void prepare_media_context(QQmlContext* root_context, QObject* view)
{
    root_context->setContextProperty(QStringLiteral("ctx"), view);
    publish_module(QStringLiteral("Multimedia"));
}

uint accepted_fill_mode(uint fill_mode)
{
    const int mode = static_cast<int>(fill_mode);
    return mode >= lowest_fill_mode && mode <= highest_fill_mode ? fill_mode : 0;
}

namespace media_part {

void close_players()
{
    for (const QPointer<QObject>& object : std::exchange(ending_objects, {}))
        delete object;
}

}  // namespace media_part

}  // namespace marlune
