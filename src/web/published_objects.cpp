#include "web/published_objects.h"

#include "binding/context_object.h"
#include "binding/manager.h"
#include "binding/property_info.h"

#include <QDebug>
#include <QJSEngine>
#include <QtQml>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_set>

namespace marlune {

using db::DataBindingContextManager;
using db::DBAbstractContextObject;

namespace {

// Both only on the Qt thread: all managers in the order of their views, and all instances that
// listen to them.
std::multimap<int, DataBindingContextManager*> managers;
std::unordered_set<PublishedObjects*> listeners;

/** Returns the manager whose object is found under that name; null if there is none. */
const DataBindingContextManager* publisher_of(const std::string& name)
{
    const auto found = std::ranges::find_if(
        managers, [&name](const auto& entry) { return entry.second->object(name) != nullptr; });
    return found == managers.end() ? nullptr : found->second;
}

DBAbstractContextObject* object_of(const QString& object_name)
{
    const std::string name = object_name.toStdString();
    const DataBindingContextManager* const publisher = publisher_of(name);
    return publisher ? publisher->object(name) : nullptr;
}

/** Converts numbers to double, as pages send them, so that hosts get only one kind of number. */
QVariantList with_numbers_as_double(QVariantList args)
{
    for (QVariant& arg : args) {
        if (arg.typeId() == QMetaType::Int)
            arg = arg.toDouble();
    }
    return args;
}

/** Prevents scripts from taking ownership of the object and collecting it. */
QObject* lent_to_script(QObject* object)
{
    if (object)
        QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
    return object;
}

}  // namespace

PublishedObjects::PublishedObjects(QObject* parent) : QObject(parent)
{
    listeners.insert(this);
    for (const auto& [order, manager] : managers)
        listen_to(*manager);
}

PublishedObjects::~PublishedObjects()
{
    listeners.erase(this);
}

void PublishedObjects::register_type()
{
    qmlRegisterSingletonType<PublishedObjects>(
        "Web", 1, 0, "PublishedObjects",
        [](QQmlEngine*, QJSEngine*) -> QObject* { return new PublishedObjects; });
}

void PublishedObjects::add(int order, DataBindingContextManager& manager)
{
    managers.emplace(order, &manager);
    for (PublishedObjects* const listener : listeners)
        listener->listen_to(manager);
}

void PublishedObjects::remove(const DataBindingContextManager& manager)
{
    std::erase_if(managers, [&manager](const auto& entry) { return entry.second == &manager; });
}

QStringList PublishedObjects::names() const
{
    std::set<QString> names;
    for (const auto& [order, manager] : managers) {
        for (const std::string& name : manager->names())
            names.insert(QString::fromStdString(name));
    }
    return {names.begin(), names.end()};
}

QObject* PublishedObjects::find(const QString& object_name) const
{
    return lent_to_script(object_of(object_name));
}

QObject* PublishedObjects::findProperty(const QString& object_name,
                                        const QString& property_name) const
{
    const DBAbstractContextObject* const object = object_of(object_name);
    return object ? lent_to_script(object->find_property(property_name)) : nullptr;
}

QVariant PublishedObjects::call(const QString& object_name, const QString& method_name,
                                const QVariantList& args) const
{
    DBAbstractContextObject* const object = object_of(object_name);
    if (!object) {
        qWarning().noquote().nospace()
            << "cannot call method '" << object_name << '.' << method_name
            << "', no web view publishes the object. See PublishedObjects.names for "
               "the published objects.";
        return {};
    }
    return object->___invoke_method(method_name, with_numbers_as_double(args));
}

/**
 * Connects each signal separately: a receiver of one signal may destroy this scene, and this object
 * with it.
 */
void PublishedObjects::listen_to(DataBindingContextManager& manager)
{
    // First, so that bindings are up to date when others receive the signal.
    connect(&manager, &DataBindingContextManager::objectRegistered, this,
            &PublishedObjects::namesChanged);
    connect(&manager, &DataBindingContextManager::objectdeRegistered, this,
            &PublishedObjects::namesChanged);
    connect(&manager, &DataBindingContextManager::objectRegistered, this,
            &PublishedObjects::objectRegistered);
    connect(&manager, &DataBindingContextManager::objectdeRegistered, this,
            &PublishedObjects::objectRemoved);
    connect(&manager, &DataBindingContextManager::gdscriptSignalEmitted, this,
            [this, &manager](const QString& object_name, const QString& signal_name,
                             const QVariantList& args) {
                const auto* const publisher = publisher_of(object_name.toStdString());
                if (!publisher || publisher == &manager)
                    emit signalEmitted(object_name, signal_name, args);
            });
}

}  // namespace marlune
