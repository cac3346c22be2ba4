#include "web/url_interceptor.h"

#include <QWebEngineUrlRequestInfo>

#include <iterator>

namespace marlune {

namespace {

// Indexed by the engine's numbers.
constexpr const char* resource_types[] = {
    "ResourceTypeMainFrame = 0, // top level page",
    "ResourceTypeSubFrame, // frame or iframe",
    "ResourceTypeStylesheet, // a CSS stylesheet",
    "ResourceTypeScript, // an external script",
    "ResourceTypeImage, // an image (jpg/gif/png/etc)",
    "ResourceTypeFontResource, // a font",
    "ResourceTypeSubResource, // an other subresource.",
    "ResourceTypeObject, // an object (or embed) tag for a plugin,",
    "ResourceTypeMedia, // a media resource.",
    "ResourceTypeWorker, // the main resource of a dedicated worker.",
    "ResourceTypeSharedWorker, // the main resource of a shared worker.",
    "ResourceTypePrefetch, // an explicitly requested prefetch",
    "ResourceTypeFavicon, // a favicon",
    "ResourceTypeXhr, // a XMLHttpRequest",
    "ResourceTypePing, // a ping request for <a ping>",
    "ResourceTypeServiceWorker, // the main resource of a service worker.",
    "ResourceTypeUnknown",
};

}  // namespace

const char* describe_resource_type(int type)
{
    const bool is_known = type >= 0 && type < static_cast<int>(std::size(resource_types));
    return is_known ? resource_types[type] : "Unknown type";
}

void GodotURLInterceptor::interceptRequest(QWebEngineUrlRequestInfo& info)
{
    static_cast<void>(describe_resource_type(info.resourceType()));
}

}  // namespace marlune
