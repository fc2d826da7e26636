#include "term/system/standardstreams.h"

#include <cstdlib>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

UINT gCodePageBefore = 0; // of the console, which outlives the program

} // namespace

void TermPrepareStreams() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    gCodePageBefore = GetConsoleOutputCP();
    if (gCodePageBefore == 0)
        return; // there is no console
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(gCodePageBefore); });
}

bool TermIsTerminal(std::FILE* inStream) {
    return _isatty(_fileno(inStream)) != 0;
}

void TermCarryBytes() {
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
}
