#pragma once

#include <QList>
#include <QString>
#include <QWebEngineUrlRequestInterceptor>

namespace marlune {

/** Returns the description of the engine's code for a resource type. */
const char* describe_resource_type(int type);

/**
 * Receives each request of a profile on which a scene installs it, determines its type, and lets it
 * pass unchanged. Scenes can create it: it is the type GodotURLInterceptor of the module "Web".
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
