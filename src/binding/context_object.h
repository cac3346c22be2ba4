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
 * An object of the host, as pages and QML see it. Its manager makes it and owns it.
 *
 * It fills in the callbacks of the host's records. They may be called on any thread and at any time, so
 * they know this object only by a reference that can be told to be stale, and they stay in the records
 * when it goes: another thread may just be calling them.
 */
class DBAbstractContextObject : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap methodsMap READ methods_map NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap variablesMap READ variables_map NOTIFY NOPSignal FINAL)
    Q_PROPERTY(bool isContextObject READ is_context_object NOTIFY NOPSignal FINAL)

public:
    /** Publishes the members, but not yet itself. `id` is the name that it is registered under. */
    DBAbstractContextObject(const QString& id, AbstractContextObjectStd* record,
                            QWebChannel* channel, DataBindingContextManager* manager);
    ~DBAbstractContextObject() override;

    /** The record's. */
    const QString& name() const { return name_; }
    /** With the codes that are recorded now. */
    QVariantMap methods_map() const;
    /** With the values that the records hold now. */
    QVariantMap variables_map() const;
    bool is_context_object() const { return true; }

    /** The host's record. Null once this is withdrawn. */
    AbstractContextObjectStd* record() const { return record_; }

    /** Null when there is none of that name. It goes with this object. */
    DBPropertyInfo* find_property(const QString& name) const;

    /** It and its members, by the names that the channel has for them. */
    QHash<QString, QObject*> parts() const;

    void publish();

    /** Publishes it and its members anew: the channel that they were on is gone. */
    void publish_on(QWebChannel* channel);

    /** Takes it and its members from the channel. The records are not touched any more. */
    void withdraw();

    // For pages, with parameters that take anything: the channel hands on values that it cannot convert
    // as if it could.
    Q_INVOKABLE QVariant ___invoke_method(QVariant func_name, QVariant args);
    Q_INVOKABLE QVariant get_method_signature(QVariant method_name);

    // Callable by name, but private as far as Qt knows, so that the channel lets no page call them.
#ifdef Q_MOC_RUN
private:
#endif
    /** Calls a method of the host and gives its result, or an invalid value with a warning. */
    Q_INVOKABLE QVariant ___invoke_method(QVariant func_name, QVariantList args);

    /** "f(a: INT,b: STRING)", or an invalid value. */
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
    // Children of this, which go with it.
    std::vector<QPointer<DBMethodInfo>> methods_;
    std::vector<QPointer<DBPropertyInfo>> properties_;
    std::vector<std::pair<QString, QPointer<QObject>>> published_;
    LiveObject live_{this};
};

}  // namespace marlune::db
