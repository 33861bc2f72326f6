// quillet-xlsreader <file.xls>: prints the first worksheet's cells in the form of xlsreading.h on
// stdout and exits 0, or prints a one-line reason on stderr and exits with kExitRefused. The
// program runs it as a child so that a damaged workbook can at worst end this process.
#include "xlsreading.h"

#include <cstdio>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

int main(int argc, char **argv)
{
    using namespace quillet::xlsreader;
    // A damaged file must not keep a core busy for long nor leave a core dump behind.
    rlimit cpu{30, 30};
    setrlimit(RLIMIT_CPU, &cpu);
    rlimit core{0, 0};
    setrlimit(RLIMIT_CORE, &core);
    if (argc != 2) {
        std::fputs("usage: quillet-xlsreader <file.xls>\n", stderr);
        return 2;
    }
    std::string out;
    const std::string reason = readCells(argv[1], out);
    if (!reason.empty()) {
        std::fprintf(stderr, "%s\n", reason.c_str());
        std::fflush(stderr);
        // _exit: the library keeps buffers of refused files; the process ends here anyway.
        _exit(kExitRefused);
    }
    const bool written = std::fwrite(out.data(), 1, out.size(), stdout) == out.size() && std::fflush(stdout) == 0;
    _exit(written ? 0 : 2);
}
