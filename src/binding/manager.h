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
 * The objects that the host has published to one view, by the names under which it has published
 * them. The manager lives on the Qt thread as long as its view, and owns all objects. Pages know it
 * as "___cm"; its signals notify them of changes to the objects.
 *
 * A lock guards the registry. It is held during accesses, but never while a signal is emitted or
 * the channel runs.
 */
class DataBindingContextManager : public QObject {
    Q_OBJECT

public:
    DataBindingContextManager(QWebChannel* channel, QObject* root, QObject* parent = nullptr);
    ~DataBindingContextManager() override;

    /** Registers the classes of published objects with QML, once per process. */
    static void register_types();

    /** The view's root object. Null if it has been deleted. */
    QObject* root() const { return root_; }

    /** Returns the record published under the name, or null. Callable on any thread. */
    AbstractContextObjectStd* find(const std::string& name) const;

    /**
     * Returns the object published under the name, or null. On the Qt thread, like all access to
     * the object.
     */
    DBAbstractContextObject* object(const std::string& name) const;

    /** Returns the names under which objects are published. */
    std::vector<std::string> names() const;

    /** Withdraws all objects and emits a signal for each, when their view is deleted. */
    void deregister_all();

    /**
     * Publishes all objects on the channel of the view's next scene. The previous channel has been
     * deleted.
     */
    void move_to(QWebChannel* channel, QObject* root);

    // Callable by name, but private in the meta-object: the channel (Qt 6.8) lets pages call all
    // public members, and passes on their values as if they were a std::string.
#ifdef Q_MOC_RUN
private:
#endif
    /**
     * Publishes the object. Returns false, with a warning, if it is null or the name is empty or
     * already used.
     */
    Q_INVOKABLE bool registerObject(std::string name, marlune::db::AbstractContextObjectStd* obj);

    /**
     * Withdraws the object: its records are not accessed any more. Returns false, with a warning,
     * if there is none.
     */
    Q_INVOKABLE bool deregisterObject(std::string name_str);

signals:
    // Pages identify these signals by their order.
    void propChanged(QString object_name, QString variable_name, QVariant value);
    void gdscriptSignalEmitted(QString object_name, QString signal_name, QVariantList args);
    void objectRegistered(QString object_name);
    void objectdeRegistered(QString object_name);

private:
    /**
     * The record is stored separately from the object, for threads that must not access the object.
     */
    struct Entry {
        QPointer<DBAbstractContextObject> object;
        AbstractContextObjectStd* record = nullptr;
    };

    bool is_taken(const std::string& name) const;
    std::optional<Entry> take(const std::string& name);

    QPointer<QWebChannel> channel_;
    QPointer<QObject> root_;
    /** Not std::shared_mutex, with which busy readers can make a writer wait. */
    mutable QReadWriteLock lock_;
    std::map<std::string, Entry> objects_;
};

}  // namespace marlune::db
