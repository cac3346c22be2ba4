#include "binding/type_names.h"

#include <array>

namespace marlune::db {

namespace {

// Indexed by code.
constexpr std::array names = {
    QLatin1StringView("UNKNOWN"),
    QLatin1StringView("NIL"),
    QLatin1StringView("BOOL"),
    QLatin1StringView("INT"),
    QLatin1StringView("FLOAT"),
    QLatin1StringView("STRING"),
    QLatin1StringView("VECTOR2"),
    QLatin1StringView("VECTOR2I"),
    QLatin1StringView("RECT2"),
    QLatin1StringView("RECT2I"),
    QLatin1StringView("VECTOR3"),
    QLatin1StringView("VECTOR3I"),
    QLatin1StringView("TRANSFORM2D"),
    QLatin1StringView("VECTOR4"),
    QLatin1StringView("VECTOR4I"),
    QLatin1StringView("PLANE"),
    QLatin1StringView("QUATERNION"),
    QLatin1StringView("AABB"),
    QLatin1StringView("BASIS"),
    QLatin1StringView("TRANSFORM3D"),
    QLatin1StringView("PROJECTION"),
    QLatin1StringView("COLOR"),
    QLatin1StringView("STRINNAME"),  // sic: the interface requires this spelling
    QLatin1StringView("NODE_PATH"),
    QLatin1StringView("RID"),
    QLatin1StringView("OBJECT"),
    QLatin1StringView("CALLABLE"),
    QLatin1StringView("SIGNAL"),
    QLatin1StringView("DICTIONARY"),
    QLatin1StringView("ARRAY"),
    QLatin1StringView("PACKED_BYTE_ARRAY"),
    QLatin1StringView("PACKED_INT32_ARRAY"),
    QLatin1StringView("PACKED_INT64_ARRAY"),
    QLatin1StringView("PACKED_FLOAT32_ARRAY"),
    QLatin1StringView("PACKED_FLOAT64_ARRAY"),
    QLatin1StringView("PACKED_STRING_ARRAY"),
    QLatin1StringView("PACKED_VECTOR2_ARRAY"),
    QLatin1StringView("PACKED_VECTOR3_ARRAY"),
    QLatin1StringView("PACKED_COLOR_ARRAY"),
    QLatin1StringView("PACKED_VECTOR4_ARRAY"),
    QLatin1StringView("VARIANT_MAX"),
};
static_assert(names.size() == static_cast<size_t>(VariantTypeStd::VARIANT_MAX) + 1);

}  // namespace

QLatin1StringView type_name(VariantTypeStd code)
{
    const auto index = static_cast<size_t>(code);  // a negative code becomes a huge one
    return index < names.size() ? names[index] : QLatin1StringView();
}

}  // namespace marlune::db
