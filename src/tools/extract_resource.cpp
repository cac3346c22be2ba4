// Writes the script of Qt WebChannel's library and the given files into one file: extract_resource
// FILE INPUT... Runs on the build machine, so that the script always belongs to the Qt version of
// the build.

#include <QFile>
#include <QWebChannel>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fputs("usage: extract_resource FILE INPUT...\n", stderr);
        return 2;
    }
    const QWebChannel channel;  // a use of the library, so that the linker keeps it
    QByteArray joined;
    for (int i = 2; i < argc; ++i) {
        QFile input(QFile::decodeName(argv[i]));
        if (!input.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "extract_resource: cannot read %s\n", argv[i]);
            return 1;
        }
        joined += input.readAll() + '\n';
    }
    QFile file(QFile::decodeName(argv[1]));
    if (!file.open(QIODevice::WriteOnly) || file.write(joined) != joined.size() || !file.flush()) {
        std::fprintf(stderr, "extract_resource: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
