#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QString>
#include <QStringList>

namespace marlune::test {

/** The signatures of those that a class itself adds, in their order. */
inline QStringList own_methods(const QMetaObject& meta, QMetaMethod::MethodType type)
{
    QStringList signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            signatures += QString::fromLatin1(meta.method(i).methodSignature());
    }
    return signatures;
}

}  // namespace marlune::test
