#pragma once

#include "runtime/host_callback.h"
#include "runtime/live_objects.h"
#include "runtime/qt_thread.h"
#include "runtime/trace.h"

#include <QSemaphore>

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

/**
 * How a call gets from a thread of the host to the Qt thread. Facades use the verbs of facade_call.h.
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

/** What a caller waits for, on its own stack: it does not leave before its call has completed. */
template <typename Result>
struct Outcome {
    QSemaphore completed;
    std::optional<Result> result;
};

template <>
struct Outcome<void> {
    QSemaphore completed;
};

/**
 * Completes its caller exactly once, whatever becomes of the call: when it is told to, or when it is
 * destroyed because the work has thrown, or because Qt discards the call with its target or its loop.
 */
template <typename Result>
class Completion {
public:
    explicit Completion(Outcome<Result>& outcome) : outcome_(&outcome) {}
    Completion(Completion&& other) noexcept : outcome_(std::exchange(other.outcome_, nullptr)) {}
    ~Completion() { complete(); }

    Outcome<Result>* operator->() { return outcome_; }

    void complete()
    {
        if (auto* const outcome = std::exchange(outcome_, nullptr))
            outcome->completed.release();
    }

private:
    Outcome<Result>* outcome_;
};

/** What is posted. */
template <typename Result, typename Target, typename Work>
class CarriedCall {
public:
    CarriedCall(QObject* target, Delivery delivery, Outcome<Result>& outcome, Work&& work)
        : completion_(outcome), target_(target), delivery_(delivery), work_(std::move(work))
    {
    }

    void operator()()
    {
        // A stale facade may name an object of another kind that has taken its view's place.
        auto* const target = qobject_cast<Target*>(target_);
        if (!target)
            return;
        if constexpr (std::is_void_v<Result>)
            std::invoke(work_, *target);
        else
            completion_->result.emplace(std::invoke(work_, *target));
        if (delivery_ == Delivery::Queued)
            completion_.complete();
    }

private:
    // First, so that it goes last: a blocking caller goes on once the work's captures are gone.
    Completion<Result> completion_;
    QObject* target_;
    Delivery delivery_;
    Work work_;
};

/** Posts the call and waits for its completion, which comes at once when the target is not live. */
template <typename Target, typename Result, typename Work>
void carry(QObject* target, Delivery delivery, Outcome<Result>& outcome, Work&& work)
{
    CarriedCall<Result, Target, Work> carried(target, delivery, outcome, std::move(work));
    LiveObjects::instance().post(target, [target, carried = std::move(carried)]() mutable {
        run_in_turn(*target, carried);
    });
    outcome.completed.acquire();
}

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
    } catch (...) {
        report_exception(object);
        return fallback();
    }
}

}  // namespace detail

/**
 * Carries a call that gives a result; `fallback` is what the caller gets where none comes. The caller
 * names the kind of target that the work is for, but hands over the pointer as it is: it may be stale,
 * and only the Qt thread can tell.
 */
template <typename Target, typename Result, typename Work>
Result call(TracedName name, QObject* target, Delivery delivery, Result fallback, Work work)
{
    trace(name, "M");
    if (!target)
        return fallback;
    if (on_qt_thread())
        return detail::call_in_place<Target>(
            target, [&] { return fallback; }, work);

    detail::Outcome<Result> outcome;
    detail::carry<Target>(target, delivery, outcome, std::move(work));
    return outcome.result ? std::move(*outcome.result) : fallback;
}

/** Carries a call that gives nothing. */
template <typename Target, typename Work>
void call(TracedName name, QObject* target, Delivery delivery, Work work)
{
    trace(name, "M");
    if (!target)
        return;
    if (on_qt_thread())
        return detail::call_in_place<Target>(
            target, [] {}, work);

    detail::Outcome<void> outcome;
    detail::carry<Target>(target, delivery, outcome, std::move(work));
}

/**
 * Carries a call whose caller goes on at once. It runs on its turn, after the calls that its thread has
 * made before, and never where its target has gone. On the Qt thread too it waits for its turn.
 */
template <typename Target, typename Work>
void post(TracedName name, QObject* target, Work work)
{
    trace(name, "M");
    auto carried = [target, work = std::move(work)]() mutable {
        if (auto* const live = qobject_cast<Target*>(target))
            std::invoke(work, *live);
    };
    LiveObjects::instance().post(target, [target, carried = std::move(carried)]() mutable {
        run_in_turn(*target, carried);
    });
}

/** Carries nothing: runs on the caller's thread, within the bounds of LiveObjects::visit(). */
template <typename Target, typename Work>
void visit(TracedName name, QObject* target, Work work)
{
    trace(name, "M");
    LiveObjects::instance().visit(target, [&](QObject& object) {
        if (auto* const live = qobject_cast<Target*>(&object))
            std::invoke(work, *live);
    });
}

}  // namespace marlune
