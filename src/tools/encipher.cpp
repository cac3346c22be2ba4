// Converts a QML source into its stored form: encipher PLAIN STORED. Runs on the build machine.

#include "views/qml_cipher.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: encipher PLAIN STORED\n", stderr);
        return 2;
    }
    std::ifstream plain(argv[1], std::ios::binary);
    if (!plain) {
        std::fprintf(stderr, "encipher: cannot read %s\n", argv[1]);
        return 1;
    }
    std::string bytes{std::istreambuf_iterator<char>(plain), {}};
    marlune::apply_qml_cipher(bytes, marlune::qml_cipher_key);

    std::ofstream stored(argv[2], std::ios::binary | std::ios::trunc);
    if (!stored.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
        std::fprintf(stderr, "encipher: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
