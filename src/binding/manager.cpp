#include "binding/manager.h"

#include "binding/context_object.h"
#include "binding/method_info.h"
#include "binding/property_info.h"

#include <QDebug>
#include <QQmlListProperty>
#include <QtQml>
#include <QWebChannel>

#include <mutex>
#include <ranges>
#include <utility>

namespace marlune::db {

namespace {

template <typename Class>
void register_type(const char* uri, const char* name)
{
    qmlRegisterUncreatableType<Class>(uri, 1, 0, name, QStringLiteral("Cannot create"));
    qRegisterMetaType<Class*>();
    qRegisterMetaType<QQmlListProperty<Class>>();
}

}  // namespace

DataBindingContextManager::DataBindingContextManager(QWebChannel* channel, QObject* root,
                                                     QObject* parent)
    : QObject(parent), channel_(channel), root_(root)
{
}

DataBindingContextManager::~DataBindingContextManager()
{
    std::map<std::string, Entry> objects;
    {
        const QWriteLocker locker(&lock_);
        objects = std::exchange(objects_, {});
    }
    for (const auto& [name, entry] : objects)
        delete entry.object;
    // Without a client, the channel does not notice that its objects are deleted.
    if (channel_ && channel_->registeredObjects().values().contains(this))
        channel_->deregisterObject(this);
}

void DataBindingContextManager::register_types()
{
    static std::once_flag once;
    std::call_once(once, [] {
        register_type<DBAbstractContextObject>("com.libopal.DBAbstractContextObject",
                                               "DBAbstractContextObject");
        register_type<DBMethodInfo>("com.libopal.DBMethodInfo", "DBMethodInfo");
        register_type<DBPropertyInfo>("com.libopal.DBPropertyInfo", "DBPropertyInfo");
    });
}

AbstractContextObjectStd* DataBindingContextManager::find(const std::string& name) const
{
    const QReadLocker locker(&lock_);
    const auto found = objects_.find(name);
    return found == objects_.end() ? nullptr : found->second.record;
}

DBAbstractContextObject* DataBindingContextManager::object(const std::string& name) const
{
    const QReadLocker locker(&lock_);
    const auto found = objects_.find(name);
    return found == objects_.end() ? nullptr : found->second.object.data();
}

std::vector<std::string> DataBindingContextManager::names() const
{
    const QReadLocker locker(&lock_);
    const auto keys = std::views::keys(objects_);
    return {keys.begin(), keys.end()};
}

void DataBindingContextManager::deregister_all()
{
    for (const std::string& name : names())
        deregisterObject(name);
}

void DataBindingContextManager::move_to(QWebChannel* channel, QObject* root)
{
    channel_ = channel;
    root_ = root;
    for (const auto& [name, entry] : objects_) {
        if (entry.object)
            entry.object->publish_on(channel);
    }
}

bool DataBindingContextManager::registerObject(std::string name, AbstractContextObjectStd* obj)
{
    const QString id = QString::fromStdString(name);
    if (!obj) {
        qWarning().noquote() << "cannot add context object '" + id
                + "', it is null. Pass its record.";
        return false;
    }
    if (name.empty()) {
        qWarning("cannot add context object '', its name is empty. Pass a name.");
        return false;
    }
    if (is_taken(name)) {
        qWarning().noquote() << "cannot add context object '" + id
                + "', already occupied by another object. Use a different name.";
        return false;
    }

    auto* const object = new DBAbstractContextObject(id, obj, channel_, this);
    {
        const QWriteLocker locker(&lock_);
        objects_.emplace(std::move(name), Entry{object, obj});
    }
    object->publish();
    emit objectRegistered(id);
    return true;
}

bool DataBindingContextManager::deregisterObject(std::string name_str)
{
    const QString id = QString::fromStdString(name_str);
    const auto entry = take(name_str);
    if (!entry) {
        qWarning().noquote() << "cannot remove context object '" + id + "', does not exist.";
        return false;
    }
    if (entry->object) {
        entry->object->withdraw();
        // The host may have been called by this object, which is then still running.
        entry->object->deleteLater();
    }
    emit objectdeRegistered(id);
    return true;
}

/**
 * Also true for the name of this manager or of a member of another object: all share the channel.
 */
bool DataBindingContextManager::is_taken(const std::string& name) const
{
    if (channel_ && channel_->registeredObjects().contains(QString::fromStdString(name)))
        return true;
    const QReadLocker locker(&lock_);
    return objects_.contains(name);
}

std::optional<DataBindingContextManager::Entry>
DataBindingContextManager::take(const std::string& name)
{
    const QWriteLocker locker(&lock_);
    const auto found = objects_.find(name);
    if (found == objects_.end())
        return std::nullopt;
    return objects_.extract(found).mapped();
}

}  // namespace marlune::db
