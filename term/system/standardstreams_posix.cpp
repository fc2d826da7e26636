#include "term/system/standardstreams.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

/** The number of a stream that is closed would go to the next file opened, and what is printed into a
 *  picture. It gets a file that takes no part in that, and refuses what a closed one refuses. */
void TermPrepareStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY); // the lowest free number
    }
}

bool TermIsTerminal(std::FILE* inStream) {
    return isatty(fileno(inStream)) != 0;
}

void TermCarryBytes() {}
