#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace marlune {

template <typename Signature>
class SharedFunction;

/** A function whose copies share one state. */
template <typename Result, typename... Parameters>
class SharedFunction<Result(Parameters...)> {
public:
    using Function = std::function<Result(Parameters...)>;

    explicit SharedFunction(Function function)
        : function_(std::make_shared<const Function>(std::move(function)))
    {
    }

    Result operator()(Parameters... parameters) const
    {
        return (*function_)(std::forward<Parameters>(parameters)...);
    }

private:
    std::shared_ptr<const Function> function_;
};

/** Makes future copies of the function share its state. Repeated calls do nothing. */
template <typename Result, typename... Parameters>
void share(std::function<Result(Parameters...)>& function)
{
    using Shared = SharedFunction<Result(Parameters...)>;
    if (function && !function.template target<Shared>())
        function = Shared(std::move(function));
}

}  // namespace marlune
