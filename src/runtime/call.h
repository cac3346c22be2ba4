#pragma once

#include "runtime/live_objects.h"
#include "runtime/qt_thread.h"
#include "runtime/trace.h"

#include <QFuture>
#include <QPromise>

#include <exception>
#include <functional>
#include <type_traits>
#include <utility>

/**
 * The one way in which a call gets from a thread of the host to the Qt thread. A facade member is one
 * expression of it: its name, its view, how it is delivered, its default, what to do.
 *
 *     return call("marlune::MView::get_mips_count", view_, Delivery::Queued, 1,
 *                 [](View& view) { return view.get_mips_count(); });
 */
namespace marlune {

/** When the caller of a carried call goes on. */
enum class Delivery {
    /** When the call and all it carried are gone from the Qt thread, as with a blocking-queued connection. */
    Blocking,
    /** As soon as the work is done and its result is there. */
    Queued,
};

namespace detail {

/**
 * What is posted. It completes its caller's future exactly once: with the result when the work has
 * run; without one when the work has thrown, or when Qt discards the functor because its target or
 * the event loop is gone. The last two need no code: the promise's own destructor cancels it.
 */
template <typename Result, typename Target, typename Work>
class CarriedCall {
public:
    CarriedCall(QObject* target, Delivery delivery, Work&& work)
        : completion_{{}, delivery}, target_(target), work_(std::move(work))
    {
    }

    QFuture<Result> future() { return completion_.promise.future(); }

    void operator()()
    {
        // A stale facade may name an object of another kind that has taken its view's place.
        auto* const target = qobject_cast<Target*>(target_);
        if (!target)
            return;
        if constexpr (std::is_void_v<Result>)
            std::invoke(work_, *target);
        else
            completion_.promise.addResult(std::invoke(work_, *target));
        completion_.ran = true;
        if (completion_.delivery == Delivery::Queued)
            completion_.finish();
    }

private:
    struct Completion {
        QPromise<Result> promise;
        Delivery delivery;
        bool ran = false;

        Completion(QPromise<Result>&& promise, Delivery delivery)
            : promise(std::move(promise)), delivery(delivery)
        {
        }
        Completion(Completion&& other) noexcept
            : promise(std::move(other.promise)),
              delivery(other.delivery),
              ran(std::exchange(other.ran, false))
        {
        }
        ~Completion() { finish(); }

        void finish()
        {
            if (std::exchange(ran, false))
                promise.finish();
        }
    };

    // First, so that it goes last: a blocking caller goes on once the work's captures are gone.
    Completion completion_;
    QObject* target_;
    Work work_;
};

/** Serves a call that is made on the Qt thread, which cannot wait for itself. */
template <typename Target, typename Work, typename Fallback>
auto call_in_place(QObject* object, const Fallback& fallback, Work&& work)
{
    if (!LiveObjects::instance().contains(object))
        return fallback();
    auto* const target = qobject_cast<Target*>(object);
    if (!target)
        return fallback();
    try {
        return std::invoke(work, *target);
    } catch (const std::exception& error) {
        report_exception(object, error.what());
        return fallback();
    }
}

}  // namespace detail

/** Carries a call that gives a result; `fallback` is what the caller gets where none comes. */
template <typename Target, typename Result, typename Work>
Result call(const char* name, Target* target, Delivery delivery, Result fallback, Work work)
{
    trace(name, "M");
    if (!target)
        return fallback;
    if (on_qt_thread())
        return detail::call_in_place<Target>(target, [&] { return fallback; }, work);

    detail::CarriedCall<Result, Target, Work> carried(target, delivery, std::move(work));
    auto future = carried.future();
    if (!LiveObjects::instance().post(target, std::move(carried)))
        return fallback;
    future.waitForFinished();
    return future.resultCount() > 0 ? future.result() : fallback;
}

/** Carries a call that gives nothing. */
template <typename Target, typename Work>
void call(const char* name, Target* target, Delivery delivery, Work work)
{
    trace(name, "M");
    if (!target)
        return;
    if (on_qt_thread())
        return detail::call_in_place<Target>(target, [] {}, work);

    detail::CarriedCall<void, Target, Work> carried(target, delivery, std::move(work));
    auto future = carried.future();
    if (LiveObjects::instance().post(target, std::move(carried)))
        future.waitForFinished();
}

}  // namespace marlune
