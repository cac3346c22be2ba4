#pragma once

#include "runtime/host_callback.h"
#include "runtime/live_objects.h"
#include "runtime/qt_thread.h"
#include "runtime/report_exception.h"
#include "runtime/trace.h"

#include <QSemaphore>

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

/**
 * Posts calls from threads of the host to the Qt thread. Facades use the verbs of facade_call.h.
 */
namespace marlune {

/** What the caller of a posted call waits for. */
enum class WaitFor {
    /** That the work is done and its result is there. */
    Result,
    /** That, besides, the Qt thread has destroyed all that the call has captured. */
    Cleanup,
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
 * Releases its caller exactly once, whatever becomes of the call: by complete(), or by its
 * destruction when the work has thrown, or when Qt discards the call with its target or its event
 * loop.
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

/** The functor that is posted. */
template <typename Result, typename Target, typename Work>
class PendingCall {
public:
    PendingCall(QObject* target, WaitFor wait, Outcome<Result>& outcome, Work&& work)
        : completion_(outcome), target_(target), wait_(wait), work_(std::move(work))
    {
    }

    void operator()()
    {
        // A stale facade may name an object of another kind that has taken its view's address.
        auto* const target = qobject_cast<Target*>(target_);
        if (!target)
            return;
        if constexpr (std::is_void_v<Result>)
            std::invoke(work_, *target);
        else
            completion_->result.emplace(std::invoke(work_, *target));
        if (wait_ == WaitFor::Result)
            completion_.complete();
    }

private:
    // First, so that it is destroyed last, after the work's captures.
    Completion<Result> completion_;
    QObject* target_;
    WaitFor wait_;
    Work work_;
};

/** Posts the call and waits for its completion, which comes at once when the target is not live. */
template <typename Target, typename Result, typename Work>
void post_and_wait(QObject* target, WaitFor wait, Outcome<Result>& outcome, Work&& work)
{
    PendingCall<Result, Target, Work> pending(target, wait, outcome, std::move(work));
    LiveObjects::instance().post(target, [target, pending = std::move(pending)]() mutable {
        run_in_turn(*target, pending);
    });
    outcome.completed.acquire();
}

/** Runs a call that is made on the Qt thread, which cannot wait for itself. */
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
 * Runs the work on the Qt thread and returns its result, or `fallback` where it does not run. The
 * pointer may be stale: only the Qt thread checks that it is an object of the kind that the work is
 * for.
 */
template <typename Target, typename Result, typename Work>
Result call(TracedName name, QObject* target, WaitFor wait, Result fallback, Work work)
{
    trace(name, "M");
    if (!target)
        return fallback;
    if (on_qt_thread())
        return detail::call_in_place<Target>(
            target, [&] { return fallback; }, work);

    detail::Outcome<Result> outcome;
    detail::post_and_wait<Target>(target, wait, outcome, std::move(work));
    return outcome.result ? std::move(*outcome.result) : fallback;
}

/** The same for work without a result. */
template <typename Target, typename Work>
void call(TracedName name, QObject* target, WaitFor wait, Work work)
{
    trace(name, "M");
    if (!target)
        return;
    if (on_qt_thread())
        return detail::call_in_place<Target>(
            target, [] {}, work);

    detail::Outcome<void> outcome;
    detail::post_and_wait<Target>(target, wait, outcome, std::move(work));
}

/**
 * Posts the work and returns at once, on the Qt thread too. It runs after the calls that its thread
 * has made before, and not at all where its target is destroyed first.
 */
template <typename Target, typename Work>
void post(TracedName name, QObject* target, Work work)
{
    trace(name, "M");
    auto pending = [target, work = std::move(work)]() mutable {
        if (auto* const live = qobject_cast<Target*>(target))
            std::invoke(work, *live);
    };
    LiveObjects::instance().post(target, [target, pending = std::move(pending)]() mutable {
        run_in_turn(*target, pending);
    });
}

/** Runs the work on the caller's thread, under the rules of LiveObjects::with_live_object(). */
template <typename Target, typename Work>
void with_live_object(TracedName name, QObject* target, Work work)
{
    trace(name, "M");
    LiveObjects::instance().with_live_object(target, [&](QObject& object) {
        if (auto* const live = qobject_cast<Target*>(&object))
            std::invoke(work, *live);
    });
}

}  // namespace marlune
