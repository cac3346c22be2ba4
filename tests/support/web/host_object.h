#pragma once

#include <marlune/context_object_std.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace marlune::test {

/** The records of an object that a host publishes, with short functions to fill them. */
class HostObject {
public:
    using Arguments = std::vector<db::ArgumentInfoStd>;
    using Call = decltype(db::MethodInfoStd::func_call_method);

    explicit HostObject(std::string name) { record_.name = std::move(name); }

    db::MethodInfoStd& method(const std::string& name, Arguments arguments = {}, Call call = {},
                              std::optional<db::VariantTypeStd> result = {})
    {
        db::MethodInfoStd& method = *methods_.emplace_back(std::make_unique<db::MethodInfoStd>());
        method.name = name;
        method.args = std::move(arguments);
        method.func_call_method = std::move(call);
        if (result)
            method.return_type = db::ReturnInfoStd{*result};
        record_.methods[name] = &method;
        return method;
    }

    db::MethodInfoStd& signal(const std::string& name, Arguments arguments = {})
    {
        db::MethodInfoStd& signal = method(name, std::move(arguments));
        signal.is_signal = true;
        return signal;
    }

    db::PropertyInfoStd& property(const std::string& name, db::VariantTypeStd type,
                                  db::ContainerStd value)
    {
        db::PropertyInfoStd& property =
            *properties_.emplace_back(std::make_unique<db::PropertyInfoStd>());
        property.name = name;
        property.type = type;
        property.value = std::move(value);
        record_.properties[name] = &property;
        return property;
    }

    db::AbstractContextObjectStd& record() { return record_; }

private:
    db::AbstractContextObjectStd record_;
    std::vector<std::unique_ptr<db::MethodInfoStd>> methods_;
    std::vector<std::unique_ptr<db::PropertyInfoStd>> properties_;
};

}  // namespace marlune::test
