#include "runtime/live_objects.h"

namespace marlune {

LiveObjects& LiveObjects::instance()
{
    static auto* const objects = new LiveObjects;
    return *objects;
}

void LiveObjects::add(QObject* object)
{
    const QWriteLocker locker(&lock_);
    if (!closed_)
        objects_.insert(object);
}

void LiveObjects::remove(QObject* object)
{
    const QWriteLocker locker(&lock_);
    objects_.erase(object);
}

bool LiveObjects::contains(QObject* object) const
{
    if (closed_)
        return false;
    const QReadLocker locker(&lock_);
    return objects_.contains(object);
}

void LiveObjects::close()
{
    const QWriteLocker locker(&lock_);
    closed_ = true;
    objects_.clear();
}

}  // namespace marlune
