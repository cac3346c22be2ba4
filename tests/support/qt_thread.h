#pragma once

#include <marlune/app.h>

#include <QMetaObject>
#include <QObject>

#include <type_traits>

namespace marlune::test {

/** Runs `work` on the started library's Qt thread and returns its result. */
template <typename Work>
auto on_qt_thread(Work work)
{
    auto* const context = static_cast<QObject*>(MARLUNE_CTX);
    using Result = std::invoke_result_t<Work>;
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(context, work, Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(context, work, Qt::BlockingQueuedConnection, &result);
        return result;
    }
}

}  // namespace marlune::test
