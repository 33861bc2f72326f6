// Built with the normal compiler instead of libFuzzer: feeds every saved input (seeds and past
// findings) of the folders or files on the command line to the target once, so that the test
// suite re-checks every past finding in seconds. A crash or a failed check ends the program.
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <algorithm>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (QFileInfo(arg).isDir()) {
            QDirIterator it(arg, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
            while (it.hasNext())
                files << it.next();
        } else {
            files << arg;
        }
    }
    std::sort(files.begin(), files.end());
    if (files.isEmpty()) {
        std::fprintf(stderr, "no inputs found in the given corpus\n");
        return 2;
    }
    for (const QString &path : std::as_const(files)) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return 2;
        }
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
    }
    std::printf("%lld inputs replayed, 0 failed\n", static_cast<long long>(files.size()));
    return 0;
}
