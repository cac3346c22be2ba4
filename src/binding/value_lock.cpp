#include "marlune/context_object_std.h"

#include <mutex>

namespace marlune::db {

namespace {

/** Recursive, so that a host may nest. Never destroyed: its threads may outlive the library. */
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
