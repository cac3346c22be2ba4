#pragma once

#include <span>
#include <string>
#include <string_view>

namespace marlune {

/**
 * Turns a QML source into its stored form and back: the same routine does both. It keeps the sources
 * from being read by a glance into the library, and hides nothing from anyone determined.
 */
void apply_qml_cipher(std::span<char> bytes, std::string_view key);

/** The key of the library's own components. */
extern const std::string qml_cipher_key;

}  // namespace marlune
