#include "binding/method_info.h"

#include "binding/conversions.h"
#include "binding/page_warnings.h"
#include "binding/type_names.h"
#include "runtime/host_callback.h"
#include "runtime/shared_function.h"

#include <QStringList>

#include <optional>
#include <utility>

namespace marlune::db {

namespace {

/** Returns the arguments in the host's types; nothing if one of them does not match its code. */
std::optional<std::vector<ContainerStd>> converted(const QVariantList& values,
                                                   std::vector<VariantTypeStd>& codes)
{
    std::vector<ContainerStd> result;
    result.reserve(codes.size());
    for (size_t i = 0; i < codes.size(); ++i) {
        auto value = from_argument(values[static_cast<qsizetype>(i)], codes[i]);
        if (!value)
            return std::nullopt;
        result.push_back(*std::move(value));
    }
    return result;
}

}  // namespace

DBMethodInfo::DBMethodInfo(const QString& name, MethodInfoStd* record, QObject* parent)
    : QObject(parent),
      name_(name),
      name_text_(name),
      record_(record),
      is_signal_(record->is_signal),
      return_code_(record->return_type ? record->return_type->type : VariantTypeStd::NIL)
{
    for (const ArgumentInfoStd& argument : record->args) {
        argument_names_.append(QString::fromStdString(argument.name));
        codes_.push_back(argument.type);
    }
    // Calls use copies, because a call may free its record.
    share(record->func_call_method);
}

DBMethodInfo::~DBMethodInfo()
{
    // Objects that were created for a call may still be in use further up the stack.
    for (QObject* const child : QObjectList(children())) {
        child->setParent(nullptr);
        child->deleteLater();
    }
}

QVariantMap DBMethodInfo::description() const
{
    QVariantList arguments;
    for (size_t i = 0; i < codes_.size(); ++i) {
        arguments.append(QVariantMap{
            {"name", argument_names_[static_cast<qsizetype>(i)]},
            {"type", static_cast<int>(codes_[i])},
        });
    }
    QVariantMap description = basic_description();
    description["args"] = arguments;
    return description;
}

QVariantMap DBMethodInfo::entry() const
{
    QVariantMap arguments;
    for (size_t i = 0; i < codes_.size(); ++i) {
        const QString& name = argument_names_[static_cast<qsizetype>(i)];
        arguments[name] = QVariantMap{{"name", name}, {"type", static_cast<int>(codes_[i])}};
    }
    QVariantMap entry = basic_description();
    entry["args"] = arguments;
    entry["is_method"] = true;
    return entry;
}

QString DBMethodInfo::signature() const
{
    QStringList arguments;
    for (size_t i = 0; i < codes_.size(); ++i)
        arguments += argument_names_[static_cast<qsizetype>(i)] + ": " + type_name(codes_[i]);
    return name_text_ + '(' + arguments.join(',') + ')';
}

QVariant DBMethodInfo::call(const QVariantList& values)
{
    if (values.size() != static_cast<qsizetype>(codes_.size())) {
        warn(QStringLiteral(
                 "method call error: %1 was called with %2 argument(s). Pass as many as it "
                 "declares, and declare each with a different name.")
                 .arg(signature(), QString::number(values.size())));
        return {};
    }
    auto arguments = converted(values, codes_);
    if (!arguments) {
        warn("method call error: expecting a Vector (a list) as argument with the correct lenght "
             "of parameters");
        return {};
    }
    if (!record_ || !record_->func_call_method) {
        warn("func_call_method was nullptr, failed to call method " + name_text_);
        return {};
    }

    // Optional, to distinguish a host that has thrown from one that has returned. During the call,
    // the host may withdraw this object and free its records: they are not used afterwards.
    const std::function<std::optional<ContainerStd>()> call_method =
        [callback = record_->func_call_method, record = record_, arguments = *std::move(arguments),
         codes = codes_] { return callback(record, arguments, codes); };
    const auto result = call_host(parent(), call_method);
    if (!result)
        return {};
    return to_variant_or_warn(*result, return_code_, "the result of method " + name_text_);
}

/** The common part of both descriptions. */
QVariantMap DBMethodInfo::basic_description() const
{
    return {
        {"name", name_},
        {"is_signal", is_signal_},
        {"return_type", static_cast<int>(return_code_)},
    };
}

}  // namespace marlune::db
