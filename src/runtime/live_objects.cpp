#include "runtime/live_objects.h"

#include <mutex>

namespace marlune {

LiveObjects& LiveObjects::instance()
{
    static auto* const objects = new LiveObjects;
    return *objects;
}

void LiveObjects::add(QObject* object)
{
    const std::unique_lock lock(mutex_);
    if (!closed_)
        objects_.insert(object);
}

void LiveObjects::remove(QObject* object)
{
    const std::unique_lock lock(mutex_);
    objects_.erase(object);
}

bool LiveObjects::contains(QObject* object) const
{
    if (closed_)
        return false;
    const std::shared_lock lock(mutex_);
    return objects_.contains(object);
}

void LiveObjects::close()
{
    const std::unique_lock lock(mutex_);
    closed_ = true;
    objects_.clear();
}

}  // namespace marlune
