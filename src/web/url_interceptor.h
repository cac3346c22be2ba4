#pragma once

#include <QList>
#include <QString>
#include <QWebEngineUrlRequestInterceptor>

namespace marlune {

/** What the engine's code of a resource's type stands for. */
const char* describe_resource_type(int type);

/**
 * Sees each request of a profile that a scene sets it on, tells its kind, and lets it pass as it is.
 * A scene can make one: it is the type GodotURLInterceptor of the module "Web".
 */
class GodotURLInterceptor : public QWebEngineUrlRequestInterceptor {
    Q_OBJECT

public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    void interceptRequest(QWebEngineUrlRequestInfo& info) override;

private:
    QList<QString> unused_;
};

}  // namespace marlune
