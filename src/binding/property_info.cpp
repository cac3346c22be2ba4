#include "binding/property_info.h"

#include "binding/conversions.h"
#include "binding/page_warnings.h"
#include "binding/type_names.h"
#include "runtime/host_callback.h"
#include "runtime/shared_function.h"

#include <cstdio>
#include <utility>

namespace marlune::db {

DBPropertyInfo::DBPropertyInfo(const QString& object_name, const QString& name,
                               PropertyInfoStd* record, QObject* parent)
    : QObject(parent),
      object_name_(object_name),
      key_(name),
      name_(name),
      class_name_(QString()),
      hint_string_(QString()),
      record_(record),
      code_(record->type)
{
    // Calls use copies, because a call may free its record.
    share(record->func_valueChanged_updateGodot);
}

QVariant DBPropertyInfo::value() const
{
    return converted(content());
}

void DBPropertyInfo::set_value(const QVariant& value)
{
    if (!record_)
        return;
    const VariantTypeStd code = content().code;
    auto stored = from_property_write(value, code);
    if (!stored) {
        warn(QStringLiteral("cannot set property '%1.%2', it is a %3. Pass a list with one number "
                            "per component.")
                 .arg(object_name_, key_, type_name(code)));
        return;
    }
    {
        const ValueLock lock;
        record_->value = *std::move(stored);
    }
    emit NOPSignal();
    if (!record_)
        return;  // a listener has withdrawn the object
    if (record_->func_valueChanged_updateGodot) {
        const auto callback = record_->func_valueChanged_updateGodot;
        call_host(parent(), callback, record_);
        return;
    }
    if (!may_warn())
        return;
    std::fprintf(stderr, "func_valueChanged_updateGodot nullptr! %s\n", key_.toStdString().c_str());
    std::fflush(stderr);
}

QVariantMap DBPropertyInfo::description() const
{
    return {{"name", key_}, {"type", static_cast<int>(code_)}};
}

QVariantMap DBPropertyInfo::entry() const
{
    const Content present = content();
    return {
        {"value", converted(present)},
        {"type", static_cast<int>(present.code)},
        {"is_method", false},
    };
}

DBPropertyInfo::Content DBPropertyInfo::content() const
{
    if (!record_)
        return {};
    const ValueLock lock;
    return {record_->value, record_->type};
}

QVariant DBPropertyInfo::converted(const Content& content) const
{
    return to_variant_or_warn(content.value, content.code,
                              "property '" + object_name_ + '.' + key_ + '\'');
}

void DBPropertyInfo::set(QVariant& member, const QVariant& value)
{
    const QVariant plain = without_script_value(value);
    if (member == plain)
        return;
    if (!is_plain(plain)) {
        warn(QStringLiteral(
                 "cannot set a text of property '%1.%2' to a value that is not plain data.")
                 .arg(object_name_, key_));
        return;
    }
    member = plain;
    emit NOPSignal();
}

}  // namespace marlune::db
