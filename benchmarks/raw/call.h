#pragma once

#include <QMetaObject>
#include <QObject>

#include <type_traits>

namespace marlune::bench {

/** Runs `work` on the thread of `object`, by Qt's own blocking connection. Returns its result. */
template <typename Work>
auto call(QObject* object, Work work)
{
    using Result = std::invoke_result_t<Work>;
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(object, work, Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(object, work, Qt::BlockingQueuedConnection, &result);
        return result;
    }
}

}  // namespace marlune::bench
