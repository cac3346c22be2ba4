#pragma once

#include "runtime/call.h"
#include "runtime/convert.h"
#include "runtime/trace.h"

#include <functional>
#include <source_location>
#include <tuple>
#include <type_traits>
#include <utility>

/**
 * The verbs of the facades: a facade member says in one line how its work gets to the Qt thread.
 *
 *     int MView::get_mips_count() const { return ask(view_, 1, &View::get_mips_count); }
 *
 * It names its view, the result where there is no view, and the work: a member of the view, or a
 * function that takes the view, with its arguments. A member that returns an object may come before
 * it, and a null pointer there gives the same result as no view:
 *
 *     return ask(view_, 0, &VideoView::player, &QMediaPlayer::loops);
 *
 * These are all the ways between threads:
 * - ask() and tell() wait until the work is done; most members do.
 * - complete() waits, besides, until the Qt thread has destroyed what the call has captured, as a
 *   blocking-queued connection does.
 * - post() does not wait.
 * - with_live_object() runs the work on the caller's thread, and keeps the view from being
 * destroyed meanwhile: for what the view guards by itself, such as its places for callbacks and
 * hints.
 *
 * Arguments and results are converted between the host's types and Qt's by convert.h.
 */
namespace marlune {

/** Where a call goes, and the facade member that makes it: the function in which a verb stands. */
struct Caller {
    template <typename Target>
    Caller(Target* object, std::source_location where = std::source_location::current())
        : target(object), member(where)
    {
    }

    QObject* target;
    std::source_location member;
};

namespace detail {

/** Of work: the object that it is done on, and what it takes. */
template <typename Object_, typename... Parameters>
struct WorkOn {
    using Object = Object_;

    template <typename Work, typename... Arguments>
    static decltype(auto) run(Work& work, Object& object, Arguments&&... arguments)
    {
        return std::invoke(work, object, converted<Parameters>(arguments)...);
    }
};

template <typename Lambda>
struct CallOperator;

template <typename Lambda, typename Result, typename Object, typename... Parameters>
struct CallOperator<Result (Lambda::*)(Object&, Parameters...) const>
    : WorkOn<Object, Parameters...> {
};

template <typename Work>
struct WorkOf {
};

template <typename Lambda>
requires requires
{
    &Lambda::operator();
}
struct WorkOf<Lambda> : CallOperator<decltype(&Lambda::operator())> {};

template <typename Result, typename Object, typename... Parameters>
struct WorkOf<Result (*)(Object&, Parameters...)> : WorkOn<Object, Parameters...> {
};

template <typename Result, typename Object, typename... Parameters>
struct WorkOf<Result (Object::*)(Parameters...)> : WorkOn<Object, Parameters...> {
};

template <typename Result, typename Object, typename... Parameters>
struct WorkOf<Result (Object::*)(Parameters...) const> : WorkOn<Object, Parameters...> {
};

template <typename Work>
concept IsWork = requires
{
    typename WorkOf<std::remove_cvref_t<Work>>::Object;
};

template <typename Work>
using TargetOf = typename WorkOf<std::remove_cvref_t<Work>>::Object;

/** Whether work comes first, and not arguments. */
template <typename... Rest>
constexpr bool begins_with_work = false;

template <typename First, typename... Rest>
constexpr bool begins_with_work<First, Rest...> = IsWork<First>;

/** Does the work on the object, or the rest of it on the object that its first step gives. */
template <typename Result, typename Object, typename Fallback, typename Work, typename... Rest>
Result run_on(Object& object, const Fallback& fallback, Work& work, Rest&... rest)
{
    using Step = WorkOf<std::remove_cvref_t<Work>>;
    if constexpr (begins_with_work<Rest...>) {
        auto* const next = Step::run(work, object);
        return next ? run_on<Result>(*next, fallback, rest...) : fallback();
    } else if constexpr (std::is_void_v<Result>) {
        Step::run(work, object, rest...);
    } else {
        return converted<Result>(Step::run(work, object, rest...));
    }
}

template <typename Result, typename Work, typename... Rest>
Result ask_by(WaitFor wait, const Caller& caller, const Result& fallback, Work& work, Rest&... rest)
{
    using Target = TargetOf<Work>;
    return call<Target>(caller.member, caller.target, wait, fallback, [&](Target& target) {
        return run_on<Result>(
            target, [&] { return fallback; }, work, rest...);
    });
}

template <typename Work, typename... Rest>
void tell_by(WaitFor wait, const Caller& caller, Work& work, Rest&... rest)
{
    using Target = TargetOf<Work>;
    call<Target>(caller.member, caller.target, wait, [&](Target& target) {
        run_on<void>(
            target, [] {}, work, rest...);
    });
}

}  // namespace detail

template <typename Result, detail::IsWork Work, typename... Rest>
Result ask(Caller caller, Result fallback, Work work, Rest... rest)
{
    return detail::ask_by(WaitFor::Result, caller, fallback, work, rest...);
}

template <detail::IsWork Work, typename... Rest>
void tell(Caller caller, Work work, Rest... rest)
{
    detail::tell_by(WaitFor::Result, caller, work, rest...);
}

template <typename Result, detail::IsWork Work, typename... Rest>
requires(!detail::IsWork<Result>) Result
    complete(Caller caller, Result fallback, Work work, Rest... rest)
{
    return detail::ask_by(WaitFor::Cleanup, caller, fallback, work, rest...);
}

template <detail::IsWork Work, typename... Rest>
void complete(Caller caller, Work work, Rest... rest)
{
    detail::tell_by(WaitFor::Cleanup, caller, work, rest...);
}

template <detail::IsWork Work, typename... Rest>
void post(Caller caller, Work work, Rest... rest)
{
    using Target = detail::TargetOf<Work>;
    post<Target>(caller.member, caller.target,
                 [work, carried = std::tuple(std::move(rest)...)](Target& target) {
                     std::apply(
                         [&](const auto&... arguments) {
                             detail::run_on<void>(
                                 target, [] {}, work, arguments...);
                         },
                         carried);
                 });
}

/** On the caller's thread, under the rules of LiveObjects::with_live_object(). */
template <detail::IsWork Work, typename... Rest>
void with_live_object(Caller caller, Work work, Rest... rest)
{
    using Target = detail::TargetOf<Work>;
    marlune::with_live_object<Target>(caller.member, caller.target, [&](Target& target) {
        detail::run_on<void>(
            target, [] {}, work, rest...);
    });
}

}  // namespace marlune
