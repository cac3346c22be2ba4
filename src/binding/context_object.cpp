#include "binding/context_object.h"

#include "binding/backlog.h"
#include "binding/conversions.h"
#include "binding/manager.h"
#include "binding/method_info.h"
#include "binding/page_warnings.h"
#include "binding/property_info.h"

#include <QDebug>
#include <QWebChannel>

#include <algorithm>
#include <functional>
#include <type_traits>
#include <utility>

namespace marlune::db {

namespace {

/** Only on the Qt thread. */
uint64_t next_number = 0;

/** Returns the members that still exist. They are on a channel, which may delete them. */
template <typename Member>
std::vector<Member*> standing(const std::vector<QPointer<Member>>& members)
{
    std::vector<Member*> result(members.begin(), members.end());
    std::erase(result, nullptr);
    return result;
}

/** Returns the member with the key, or null. */
template <typename Member, typename Key, typename Getter>
Member* found_in(const std::vector<QPointer<Member>>& members, const Key& key, Getter getter)
{
    const auto found = std::ranges::find_if(members, [&](const QPointer<Member>& member) {
        return member && std::invoke(getter, *member) == key;
    });
    return found == members.end() ? nullptr : found->data();
}

/** The previous function is destroyed after the lock is released, because it may be the host's. */
template <typename Function>
void fill(Function& slot, std::type_identity_t<Function> callback)
{
    const ValueLock lock;
    slot.swap(callback);
}

}  // namespace

/**
 * A reference to an object that may have been deleted. Its address is not enough: another object
 * may have been created there, so the number is compared too.
 */
class DBAbstractContextObject::Reference {
public:
    explicit Reference(DBAbstractContextObject* object) : address_(object), number_(object->number_)
    {
    }

    /** Runs the work on the object from the Qt thread's event loop. Callable on any thread. */
    template <typename Work>
    void post(Work work) const
    {
        LiveObjects::instance().post(address_, [reference = *this, work = std::move(work)] {
            // Qt discards a queued call with its receiver, so there is an object at the address.
            auto* const object = qobject_cast<DBAbstractContextObject*>(reference.address_);
            if (object && object->number_ == reference.number_ && object->record_)
                work(*object);
        });
    }

private:
    QObject* address_;
    uint64_t number_;
};

DBAbstractContextObject::DBAbstractContextObject(const QString& id,
                                                 AbstractContextObjectStd* record,
                                                 QWebChannel* channel,
                                                 DataBindingContextManager* manager)
    : QObject(manager),
      number_(++next_number),
      id_(id),
      name_(QString::fromStdString(record->name)),
      record_(record),
      channel_(channel),
      manager_(manager)
{
    setObjectName(id);  // appears in messages about callbacks that throw
    add_methods();
    add_properties();
}

DBAbstractContextObject::~DBAbstractContextObject()
{
    withdraw();
}

QVariantMap DBAbstractContextObject::methods_map() const
{
    QVariantMap map;
    for (const DBMethodInfo* const method : standing(methods_))
        map[method->name_text()] = method->entry();
    return map;
}

QVariantMap DBAbstractContextObject::variables_map() const
{
    QVariantMap map;
    for (const DBPropertyInfo* const property : standing(properties_))
        map[property->key()] = property->entry();
    return map;
}

DBPropertyInfo* DBAbstractContextObject::find_property(const QString& name) const
{
    return found_in(properties_, name, &DBPropertyInfo::key);
}

QHash<QString, QObject*> DBAbstractContextObject::parts() const
{
    QHash<QString, QObject*> parts;
    for (const auto& [id, object] : published_) {
        if (object)
            parts[id] = object;
    }
    return parts;
}

void DBAbstractContextObject::publish()
{
    if (!channel_)
        return;
    channel_->registerObject(id_, this);
    published_.emplace_back(id_, this);
}

void DBAbstractContextObject::publish_on(QWebChannel* channel)
{
    channel_ = channel;
    published_.clear();
    for (DBMethodInfo* const method : standing(methods_))
        publish_member(method->name_text(), method);
    for (DBPropertyInfo* const property : standing(properties_))
        publish_member(property->key(), property);
    publish();
}

void DBAbstractContextObject::withdraw()
{
    live_.withdraw();
    record_ = nullptr;
    for (DBMethodInfo* const method : standing(methods_))
        method->withdraw();
    for (DBPropertyInfo* const property : standing(properties_))
        property->withdraw();
    for (const auto& [id, object] : std::exchange(published_, {})) {
        if (channel_ && object)
            channel_->deregisterObject(object);
    }
}

QVariant DBAbstractContextObject::___invoke_method(QVariant func_name, QVariant args)
{
    const QVariant list = without_script_value(args);
    if (list.typeId() != QMetaType::QVariantList) {
        warn("method call error: the arguments of " + shown(func_name.toString())
             + " are not a list. Pass a list with one element per argument.");
        return {};
    }
    return ___invoke_method(std::move(func_name), list.toList());
}

QVariant DBAbstractContextObject::get_method_signature(QVariant method_name)
{
    return get_method_signature(method_name.toString());
}

QVariant DBAbstractContextObject::___invoke_method(QVariant func_name, QVariantList args)
{
    const QString name = func_name.toString();
    DBMethodInfo* const method = find_method(name);
    if (!method && !find_property(name)) {
        warn("invoke_method: " + shown(name) + " doesn't exist");
        return {};
    }
    if (!method || method->is_signal()) {
        warn("invoke_method: " + shown(name) + " was not a method");
        return {};
    }
    return method->call(args);
}

QVariant DBAbstractContextObject::get_method_signature(QString method_name)
{
    const DBMethodInfo* const method = find_method(method_name);
    return method ? method->signature() : QVariant();
}

void DBAbstractContextObject::add_methods()
{
    for (const auto& [key, method] : record_->methods) {
        const QString name = QString::fromStdString(key);
        if (!method) {
            qWarning().noquote() << "method" << id_ + '.' + name
                                 << "is ignored because its record is null";
            continue;
        }
        methods_.push_back(new DBMethodInfo(name, method, this));
        publish_member(name, methods_.back());
        if (!method->is_signal)
            continue;
        fill(method->func_emit_signal,
             [reference = Reference(this), backlog = Backlog(), id = id_,
              name](const MethodInfoStd*, std::vector<ContainerStd> values,
                    std::vector<VariantTypeStd> codes) {
                 Backlog::Place place = backlog.take_place();
                 if (!place)
                     return backlog.report_dropped(id + '.' + name);
                 reference.post([place = std::move(place), name, values = std::move(values),
                                 codes = std::move(codes)](DBAbstractContextObject& object) {
                     object.announce_signal(name, values, codes);
                 });
             });
    }
}

void DBAbstractContextObject::add_properties()
{
    for (const auto& [key, property] : record_->properties) {
        const QString name = QString::fromStdString(key);
        if (!property) {
            qWarning().noquote() << "property" << id_ + '.' + name
                                 << "is ignored because its record is null";
            continue;
        }
        properties_.push_back(new DBPropertyInfo(id_, name, property, this));
        publish_member(name, properties_.back());
        fill(property->func_valueChanged_updateQt,
             [reference = Reference(this), backlog = Backlog(), property](const PropertyInfoStd*) {
                 Backlog::Place place = backlog.take_place();
                 // The waiting notifications report the value at the time when they run, including
                 // this one.
                 if (!place)
                     return;
                 reference.post(
                     [place = std::move(place), property](DBAbstractContextObject& object) {
                         object.announce_change(property);
                     });
             });
    }
}

void DBAbstractContextObject::publish_member(const QString& member_name, QObject* member)
{
    if (!channel_)
        return;
    const QString id = QStringLiteral("%1.%2").arg(id_, member_name);
    QObject* const occupant = channel_->registeredObjects().value(id);
    const auto is_occupant = [occupant](const auto& entry) { return entry.second == occupant; };
    if (occupant && std::erase_if(published_, is_occupant) > 0) {
        // A property and a method have the same name. Pages call methods through this object, so
        // the property gets the name.
        channel_->deregisterObject(occupant);
    } else if (occupant) {
        qWarning().noquote() << "cannot publish" << id
                             << "twice. Use names without points, or different ones.";
        return;
    }
    channel_->registerObject(id, member);
    published_.emplace_back(id, member);
}

DBMethodInfo* DBAbstractContextObject::find_method(const QString& name) const
{
    return record_ ? found_in(methods_, name, &DBMethodInfo::name_text) : nullptr;
}

void DBAbstractContextObject::announce_change(const PropertyInfoStd* record)
{
    DBPropertyInfo* const property = found_in(properties_, record, &DBPropertyInfo::record);
    if (!property)
        return;
    // First, so that all bindings have the value when the change is reported.
    emit property->NOPSignal();
    if (record_)  // no listener has withdrawn the object
        emit manager_->propChanged(name_, property->key(), property->value());
}

void DBAbstractContextObject::announce_signal(const QString& signal_name,
                                              const std::vector<ContainerStd>& values,
                                              const std::vector<VariantTypeStd>& codes)
{
    QVariantList list;
    for (size_t i = 0; i < values.size(); ++i) {
        const VariantTypeStd code = i < codes.size() ? codes[i] : VariantTypeStd::UNKNOWN;
        list.append(to_variant_or_warn(values[i], code,
                                       QStringLiteral("value %1 of signal '%2.%3'")
                                           .arg(QString::number(i + 1), id_, signal_name)));
    }
    emit manager_->gdscriptSignalEmitted(name_, signal_name, list);
}

}  // namespace marlune::db
