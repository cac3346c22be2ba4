#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace marlune {

namespace db {
class DataBindingContextManager;
}  // namespace db

/**
 * The objects that hosts publish on web views, for the scenes of all views: the singleton
 * PublishedObjects of the module "Web", one instance per QML engine. If several views publish an
 * object under the same name, the one of the view that was created first is used.
 *
 * The web views own the objects. A withdrawn object no longer responds and is deleted soon; a scene
 * that gets the object in a binding that reads `names` releases it in time.
 */
class PublishedObjects : public QObject {
    Q_OBJECT
    /**
     * The names in order, without duplicates. Notified whenever an object is added or removed, even
     * if its name remains.
     */
    Q_PROPERTY(QStringList names READ names NOTIFY namesChanged FINAL)

public:
    explicit PublishedObjects(QObject* parent = nullptr);
    ~PublishedObjects() override;

    static void register_type();

    /**
     * Adds the objects that a web view publishes, now and later; `order` is the view's position
     * among all views.
     */
    static void add(int order, db::DataBindingContextManager& manager);
    /**
     * For a view that is being destroyed: its objects are no longer found, but their withdrawal is
     * still reported.
     */
    static void remove(const db::DataBindingContextManager& manager);

    QStringList names() const;

    /** Returns the object that is published under the name, or null. */
    Q_INVOKABLE QObject* find(const QString& object_name) const;

    /**
     * Returns a property of the object, whose `value` can be bound and written; null if either does
     * not exist.
     */
    Q_INVOKABLE QObject* findProperty(const QString& object_name,
                                      const QString& property_name) const;

    /**
     * Calls a method of the object like a page does, and returns its result immediately; undefined,
     * with a warning, if that is not possible.
     */
    Q_INVOKABLE QVariant call(const QString& object_name, const QString& method_name,
                              const QVariantList& args) const;

signals:
    void namesChanged();
    void objectRegistered(QString name);
    void objectRemoved(QString name);
    /** Not emitted for an object that is hidden by another one of the same name. */
    void signalEmitted(QString object_name, QString signal_name, QVariantList args);

private:
    void listen_to(db::DataBindingContextManager& manager);
};

}  // namespace marlune
