#include "views/qml_cipher.h"

#include <cstdint>

namespace marlune {

const std::string qml_cipher_key = "the moon pulls at the sea and calls it rendering";

void apply_qml_cipher(std::span<char> bytes, std::string_view key)
{
    // FNV-1a hashes the key to the seed, which must not be 0; xorshift64* generates the stream.
    std::uint64_t state = 0xcbf29ce484222325u;
    for (const char character : key)
        state = (state ^ static_cast<std::uint8_t>(character)) * 0x100000001b3u;
    state |= 1u;

    for (char& byte : bytes) {
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        const auto stream = static_cast<std::uint8_t>((state * 0x2545f4914f6cdd1du) >> 56);
        byte = static_cast<char>(static_cast<std::uint8_t>(byte) ^ stream);
    }
}

}  // namespace marlune
