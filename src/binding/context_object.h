#pragma once

#include "marlune/context_object_std.h"
#include "runtime/live_objects.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QVariant>

#include <cstdint>
#include <utility>
#include <vector>

class QWebChannel;

namespace marlune::db {

class DataBindingContextManager;
class DBMethodInfo;
class DBPropertyInfo;

/**
 * An object of the host, as pages and QML see it. Its manager creates and owns it.
 *
 * It fills in the callbacks of the host's records. These may be called on any thread and at any
 * time, so they only hold a reference to this object that can become stale, and they stay in the
 * records after it is deleted: another thread may be calling them.
 */
class DBAbstractContextObject : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap methodsMap READ methods_map NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap variablesMap READ variables_map NOTIFY NOPSignal FINAL)
    Q_PROPERTY(bool isContextObject READ is_context_object NOTIFY NOPSignal FINAL)

public:
    /**
     * Publishes the members, but not yet the object itself. `id` is the name under which it is
     * registered.
     */
    DBAbstractContextObject(const QString& id, AbstractContextObjectStd* record,
                            QWebChannel* channel, DataBindingContextManager* manager);
    ~DBAbstractContextObject() override;

    /** The name in the record. */
    const QString& name() const { return name_; }
    /** The methods, with their current type codes. */
    QVariantMap methods_map() const;
    /** The properties, with the current values of the records. */
    QVariantMap variables_map() const;
    bool is_context_object() const { return true; }

    /** The host's record. Null once the object is withdrawn. */
    AbstractContextObjectStd* record() const { return record_; }

    /** Returns the property, or null if there is none of that name. This object owns it. */
    DBPropertyInfo* find_property(const QString& name) const;

    /** Returns this object and its members, by their names on the channel. */
    QHash<QString, QObject*> parts() const;

    void publish();

    /**
     * Publishes this object and its members on a new channel. The previous channel has been
     * deleted.
     */
    void publish_on(QWebChannel* channel);

    /**
     * Removes this object and its members from the channel. The records are not accessed any more.
     */
    void withdraw();

    // For pages. The parameters accept any type, because QWebChannel (Qt 6.8) passes on values that
    // it cannot convert as if it could.
    Q_INVOKABLE QVariant ___invoke_method(QVariant func_name, QVariant args);
    Q_INVOKABLE QVariant get_method_signature(QVariant method_name);

    // Callable by name, but private in the meta-object, so that the channel does not let pages
    // call them.
#ifdef Q_MOC_RUN
private:
#endif
    /** Calls a method of the host and returns its result, or an invalid value with a warning. */
    Q_INVOKABLE QVariant ___invoke_method(QVariant func_name, QVariantList args);

    /** Returns "f(a: INT,b: STRING)", or an invalid value. */
    Q_INVOKABLE QVariant get_method_signature(QString method_name);

signals:
    void NOPSignal();

private:
    class Reference;

    void add_methods();
    void add_properties();
    void publish_member(const QString& member_name, QObject* member);
    DBMethodInfo* find_method(const QString& name) const;
    void announce_change(const PropertyInfoStd* record);
    void announce_signal(const QString& signal_name, const std::vector<ContainerStd>& values,
                         const std::vector<VariantTypeStd>& codes);

    const uint64_t number_;
    QString id_;
    QString name_;
    AbstractContextObjectStd* record_;
    QPointer<QWebChannel> channel_;
    DataBindingContextManager* manager_;
    // Children of this object, which are deleted with it.
    std::vector<QPointer<DBMethodInfo>> methods_;
    std::vector<QPointer<DBPropertyInfo>> properties_;
    std::vector<std::pair<QString, QPointer<QObject>>> published_;
    LiveObject live_{this};
};

}  // namespace marlune::db
