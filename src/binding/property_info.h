#pragma once

#include "marlune/context_object_std.h"

#include <QObject>
#include <QVariant>

namespace marlune::db {

/** A property of a published object, as pages and QML see it. Its value is in the host's record. */
class DBPropertyInfo : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariant name READ name WRITE set_name NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariant class_name READ class_name WRITE set_class_name NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariant hint_string READ hint_string WRITE set_hint_string NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariant value READ value WRITE set_value NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap description READ description NOTIFY NOPSignal FINAL)

public:
    /** `object_name` is for messages in the log. */
    DBPropertyInfo(const QString& object_name, const QString& name, PropertyInfoStd* record,
                   QObject* parent);

    QVariant name() const { return name_; }
    void set_name(const QVariant& name) { set(name_, name); }
    QVariant class_name() const { return class_name_; }
    void set_class_name(const QVariant& class_name) { set(class_name_, class_name); }
    QVariant hint_string() const { return hint_string_; }
    void set_hint_string(const QVariant& hint_string) { set(hint_string_, hint_string); }

    /** Invalid, with a warning, if the record's value does not match its type. */
    QVariant value() const;

    /**
     * Stores the value in the record and calls the host's callback. A vector's value that is not a
     * list of sufficient length is refused with a warning.
     */
    void set_value(const QVariant& value);

    QVariantMap description() const;

    /** The name under which it is published, regardless of writes to `name`. */
    const QString& key() const { return key_; }

    /** The current value and type of the record. */
    QVariantMap entry() const;

    const PropertyInfoStd* record() const { return record_; }

    /** After this, the record is not accessed any more. */
    void withdraw() { record_ = nullptr; }

signals:
    void NOPSignal();

private:
    struct Content {
        ContainerStd value;
        VariantTypeStd code = VariantTypeStd::NIL;
    };

    Content content() const;
    QVariant converted(const Content& content) const;
    void set(QVariant& member, const QVariant& value);

    QString object_name_;
    QString key_;
    QVariant name_, class_name_, hint_string_;
    PropertyInfoStd* record_;
    VariantTypeStd code_;
};

}  // namespace marlune::db
