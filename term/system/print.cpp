#include "term/system/print.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "term/system/interrupt.h"

void TermPrint(const std::string& inText, TermMessages& ioMessages) {
    const bool isWritten = std::fwrite(inText.data(), 1, inText.size(), stdout) == inText.size();
    if (isWritten && std::fflush(stdout) == 0)
        return;
    if (errno == EPIPE)
        TermEndOfClosedPipe();
    ioMessages.Error(std::string("standard output: ") + std::strerror(errno));
}
