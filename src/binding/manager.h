#pragma once

#include "marlune/context_object_std.h"

#include <QObject>
#include <QPointer>
#include <QReadWriteLock>
#include <QVariant>

#include <map>
#include <optional>
#include <string>
#include <vector>

class QWebChannel;

namespace marlune::db {

class DBAbstractContextObject;

/**
 * The objects that the host has published to one view, by the names that it has published them under.
 * It lives on the Qt thread, for as long as its view has it, and takes all objects with it. Pages know
 * it as "___cm" and learn from its signals what happens to the objects.
 *
 * The registry is guarded by a lock that is held while it is looked at or changed, and never while a
 * signal is emitted or the channel is at work.
 */
class DataBindingContextManager : public QObject {
    Q_OBJECT

public:
    DataBindingContextManager(QWebChannel* channel, QObject* root, QObject* parent = nullptr);
    ~DataBindingContextManager() override;

    /** Makes the classes of published objects known to QML, once for the process. */
    static void register_types();

    /** The view's root object. Null when it is gone. */
    QObject* root() const { return root_; }

    /** The record published under the name, or null. For any thread. */
    AbstractContextObjectStd* find(const std::string& name) const;

    /** The object published under the name, or null. On the Qt thread, like all of the object. */
    DBAbstractContextObject* object(const std::string& name) const;

    /** Those under which objects are published. */
    std::vector<std::string> names() const;

    /** Withdraws all objects and tells of each, as their view goes. */
    void deregister_all();

    /** Publishes all objects on the channel of the view's next scene. The old one is gone. */
    void move_to(QWebChannel* channel, QObject* root);

    // Callable by name, but private as far as Qt knows: the channel lets pages call whatever is public,
    // and hands on what they send as if it were a std::string.
#ifdef Q_MOC_RUN
private:
#endif
    /** Publishes the object. False, with a warning, when it is null or the name is empty or taken. */
    Q_INVOKABLE bool registerObject(std::string name, marlune::db::AbstractContextObjectStd* obj);

    /** Withdraws the object: its records are not touched any more. False, with a warning, without one. */
    Q_INVOKABLE bool deregisterObject(std::string name_str);

signals:
    // Pages address these by their order.
    void propChanged(QString object_name, QString variable_name, QVariant value);
    void gdscriptSignalEmitted(QString object_name, QString signal_name, QVariantList args);
    void objectRegistered(QString object_name);
    void objectdeRegistered(QString object_name);

private:
    /** The record stands beside the object, for threads that must not touch that. */
    struct Entry {
        QPointer<DBAbstractContextObject> object;
        AbstractContextObjectStd* record = nullptr;
    };

    bool is_taken(const std::string& name) const;
    std::optional<Entry> take(const std::string& name);

    QPointer<QWebChannel> channel_;
    QPointer<QObject> root_;
    /** Not the standard library's, which lets busy readers keep a writer waiting. */
    mutable QReadWriteLock lock_;
    std::map<std::string, Entry> objects_;
};

}  // namespace marlune::db
