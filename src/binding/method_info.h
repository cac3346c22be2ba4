#pragma once

#include "marlune/context_object_std.h"

#include <QList>
#include <QObject>
#include <QVariant>

namespace marlune::db {

/** A method or a signal of a published object, as pages and QML see it. */
class DBMethodInfo : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariant name READ name NOTIFY NOPSignal FINAL)
    Q_PROPERTY(QVariantMap description READ description NOTIFY NOPSignal FINAL)

public:
    DBMethodInfo(const QString& name, MethodInfoStd* record, QObject* parent);
    ~DBMethodInfo() override;

    QVariant name() const { return name_; }
    const QString& name_text() const { return name_text_; }
    bool is_signal() const { return is_signal_; }

    /** The description with the arguments as a list, in their order. */
    QVariantMap description() const;

    /** The description with the arguments by their names. */
    QVariantMap entry() const;

    /** For example "f(a: INT,b: STRING)". */
    QString signature() const;

    /**
     * Calls the host and returns its result: an invalid value, with a warning, if the arguments do
     * not match or the host cannot be called. In both cases, the recorded type codes of the
     * arguments may change.
     */
    QVariant call(const QVariantList& values);

    /** After this, the record is not accessed any more. */
    void withdraw() { record_ = nullptr; }

signals:
    void NOPSignal();

private:
    QVariantMap basic_description() const;

    QVariant name_;
    QString name_text_;
    MethodInfoStd* record_;
    bool is_signal_;
    QList<QString> argument_names_;
    std::vector<VariantTypeStd> codes_;
    VariantTypeStd return_code_;
};

}  // namespace marlune::db
