#include "marlune/context_object_std.h"

#include <mutex>

namespace marlune::db {

namespace {

/**
 * Recursive, so that hosts may nest locks. Never destroyed, because the host's threads may outlive
 * the library.
 */
std::recursive_mutex& value_mutex()
{
    static auto* const mutex = new std::recursive_mutex;
    return *mutex;
}

}  // namespace

ValueLock::ValueLock()
{
    value_mutex().lock();
}

ValueLock::~ValueLock()
{
    value_mutex().unlock();
}

}  // namespace marlune::db
