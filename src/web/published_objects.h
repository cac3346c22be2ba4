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
 * PublishedObjects of the module "Web", one for each QML engine. Where several views publish an object
 * under the same name, the view that was made first has it.
 *
 * The objects stay those of the web views. One that is withdrawn answers no more and is deleted soon
 * after; a scene that finds it in a binding which reads `names` lets go of it in time.
 */
class PublishedObjects : public QObject {
    Q_OBJECT
    /** In order, each once. Announced whenever an object comes or goes, whether or not its name does. */
    Q_PROPERTY(QStringList names READ names NOTIFY namesChanged FINAL)

public:
    explicit PublishedObjects(QObject* parent = nullptr);
    ~PublishedObjects() override;

    static void register_type();

    /** Adds what a web view publishes, now and later; `order` is the view's place among all views. */
    static void add(int order, db::DataBindingContextManager& manager);
    /** For a view that goes: its objects are not found any more, but their withdrawal is still told. */
    static void remove(const db::DataBindingContextManager& manager);

    QStringList names() const;

    /** The object that is published under the name, or null. */
    Q_INVOKABLE QObject* find(const QString& object_name) const;

    /** A property of it, whose `value` can be bound to and written; null when either is not there. */
    Q_INVOKABLE QObject* findProperty(const QString& object_name,
                                      const QString& property_name) const;

    /**
     * Calls a method of it, as a page would, and gives its result at once; undefined, with a warning,
     * where that cannot be done.
     */
    Q_INVOKABLE QVariant call(const QString& object_name, const QString& method_name,
                              const QVariantList& args) const;

signals:
    void namesChanged();
    void objectRegistered(QString name);
    void objectRemoved(QString name);
    /** Not for an object that another one of its name keeps from being found. */
    void signalEmitted(QString object_name, QString signal_name, QVariantList args);

private:
    void listen_to(db::DataBindingContextManager& manager);
};

}  // namespace marlune
