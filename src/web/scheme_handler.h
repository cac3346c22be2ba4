#pragma once

#include "runtime/live_objects.h"

#include <QWebEngineUrlSchemeHandler>

#include <cstdint>
#include <functional>
#include <string>

namespace marlune {

/**
 * Serves the "res" scheme from the host's packed files. One instance for the process, on the Qt
 * thread; never destroyed, since the profile that it is installed on is never destroyed either.
 */
class GodotSchemeHandler : public QWebEngineUrlSchemeHandler {
    Q_OBJECT

public:
    using ResourceFile = std::function<uint8_t*(std::string path, bool& flag, uint64_t& size)>;

    /** Replaces the function that gives the files' bytes. It is called on the Qt thread. */
    void set_resource_file(ResourceFile callback);

    void requestStarted(QWebEngineUrlRequestJob* job) override;

private:
    ResourceFile m_resource_file;
    LiveObject live_{this};
};

}  // namespace marlune
