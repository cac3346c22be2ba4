#pragma once

#include <span>
#include <string>
#include <string_view>

namespace marlune {

/**
 * Enciphers and deciphers a QML source; both are the same operation. It keeps the sources from
 * casual readers of the library's file and is no protection against others.
 */
void apply_qml_cipher(std::span<char> bytes, std::string_view key);

/** The key of the library's own components. */
extern const std::string qml_cipher_key;

}  // namespace marlune
