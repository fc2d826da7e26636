#include "term/standardstreams.h"

#include <unistd.h>

void TermPrepareStreams() {}

bool TermIsTerminal(std::FILE* inStream) {
    return isatty(fileno(inStream)) != 0;
}

void TermCarryBytes() {}
