#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

/**
 * The values that a host exchanges with the pages and QML scenes to which it publishes objects.
 * They are plain data of the standard library: no Qt, no locks, nothing to free.
 */
namespace marlune::db {

struct Vector2Std {
    double x = 0, y = 0;
    bool operator==(const Vector2Std&) const = default;
};

struct Vector2iStd {
    int32_t x = 0, y = 0;
    bool operator==(const Vector2iStd&) const = default;
};

struct Vector3Std {
    double x = 0, y = 0, z = 0;
    bool operator==(const Vector3Std&) const = default;
};

struct Vector3iStd {
    int32_t x = 0, y = 0, z = 0;
    bool operator==(const Vector3iStd&) const = default;
};

struct Vector4Std {
    double x = 0, y = 0, z = 0, w = 0;
    bool operator==(const Vector4Std&) const = default;
};

struct Vector4iStd {
    int32_t x = 0, y = 0, z = 0, w = 0;
    bool operator==(const Vector4iStd&) const = default;
};

/**
 * One value. Strings are UTF-8. A dictionary or an array is also a string: its compact JSON text.
 */
using ValueStd = std::variant<int32_t, std::string, double, bool, Vector2Std, Vector2iStd,
                              Vector3Std, Vector3iStd, Vector4Std, Vector4iStd>;

/**
 * An argument, a result or the value of a property. The library creates and accepts only the first
 * alternative: if the host passes a map or a vector, the call or the read gives an invalid value,
 * and the library logs a warning. Pass containers as JSON text with the type code DICTIONARY or
 * ARRAY.
 */
using ContainerStd = std::variant<ValueStd, std::map<std::string, ValueStd>, std::vector<ValueStd>>;

/**
 * The type codes with which properties, arguments and results are declared: the engine's value
 * types. BOOL, INT, FLOAT, STRING, the six vectors, DICTIONARY and ARRAY determine how a value is
 * converted, as do UNKNOWN (convert by the type of the value itself) and NIL (no value). All others
 * are only labels.
 */
enum class VariantTypeStd : int32_t {
    UNKNOWN,
    NIL,
    BOOL,
    INT,
    FLOAT,
    STRING,
    VECTOR2,
    VECTOR2I,
    RECT2,
    RECT2I,
    VECTOR3,
    VECTOR3I,
    TRANSFORM2D,
    VECTOR4,
    VECTOR4I,
    PLANE,
    QUATERNION,
    AABB,
    BASIS,
    TRANSFORM3D,
    PROJECTION,
    COLOR,
    STRINGNAME,
    NODE_PATH,
    RID,
    OBJECT,
    CALLABLE,
    SIGNAL,
    DICTIONARY,
    ARRAY,
    PACKED_BYTE_ARRAY,
    PACKED_INT32_ARRAY,
    PACKED_INT64_ARRAY,
    PACKED_FLOAT32_ARRAY,
    PACKED_FLOAT64_ARRAY,
    PACKED_STRING_ARRAY,
    PACKED_VECTOR2_ARRAY,
    PACKED_VECTOR3_ARRAY,
    PACKED_COLOR_ARRAY,
    PACKED_VECTOR4_ARRAY,
    VARIANT_MAX,
};

}  // namespace marlune::db
