#include "term/system/terminal.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "term/system/signals_posix.h"

namespace {

// Shared with the signal handlers.
volatile std::sig_atomic_t gIsHeld = 0;
volatile std::sig_atomic_t gMayHaveChanged = 0; // other programs may have changed the modes we set
volatile int gTerminal = -1;                    // of the keys
termios gUsualModes;                            // written once, before the handlers are installed

constexpr std::string_view km_HideCursor = "\033[?25l";
constexpr std::string_view km_EraseAndShowCursor = "\033[?2026l\r\033[J\033[?25h";

void WriteAll(std::string_view inText) {
    while (!inText.empty()) {
        const ssize_t size = write(STDERR_FILENO, inText.data(), inText.size());
        if (size <= 0)
            return;
        inText.remove_prefix(static_cast<std::size_t>(size));
    }
}

bool IsForeground() {
    return tcgetpgrp(gTerminal) == getpgrp();
}

extern "C" void LetGoAndEnd(int inSignal) {
    TermLetGoOfTerminal();
    TermRaiseWithDefault(inSignal);
}

/** Ctrl-Z: gives the terminal back, then stops like any program. Resumes with the handler in place again; the
 *  next drawing takes the terminal, if it is ours by then. */
extern "C" void LetGoAndStop(int inSignal) {
    const int error = errno;
    TermLetGoOfTerminal();
    TermRaiseWithDefault(inSignal);
    TermCatchSignal(inSignal, LetGoAndStop);
    errno = error;
}

/** During a stop that could not be caught, another program may have used the terminal. */
extern "C" void DoubtHold(int /*inSignal*/) {
    gMayHaveChanged = 1;
}

bool IsPipe(int inDescriptor) {
    struct stat status {};
    return fstat(inDescriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

bool IsSet(const char* inVariable) {
    const char* value = std::getenv(inVariable);
    return value && *value;
}

} // namespace

bool TermCanDraw(bool inReadsInput) {
    const char* kind = std::getenv("TERM");
    if (!kind || !*kind || std::strcmp(kind, "dumb") == 0)
        return false;
    if (!isatty(STDERR_FILENO) || IsPipe(STDOUT_FILENO) || (!inReadsInput && !isatty(STDIN_FILENO)))
        return false;
    if (gTerminal < 0)
        gTerminal = open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY);
    if (gTerminal < 0 || tcgetattr(gTerminal, &gUsualModes) != 0)
        return false;
    for (const int signal : {SIGQUIT, SIGABRT})
        TermCatchSignal(signal, LetGoAndEnd);
    TermCatchSignal(SIGTSTP, LetGoAndStop);
    TermCatchSignal(SIGCONT, DoubtHold);
    return true;
}

TermSize TermGetSize() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {80, 24};
    return {size.ws_col, size.ws_row};
}

bool TermShowsUtf8() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        if (!IsSet(variable))
            continue;
        const std::string_view value = std::getenv(variable);
        return value.find("UTF-8") != std::string_view::npos || value.find("utf8") != std::string_view::npos;
    }
    return false;
}

bool TermWantsColours() {
    return !IsSet("NO_COLOR");
}

bool TermHoldTerminal() {
    if (!IsForeground()) {
        gIsHeld = 0;
        return false;
    }
    if (gIsHeld && !gMayHaveChanged)
        return true;
    termios modes = gUsualModes;
    modes.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO)); // Ctrl-C and Ctrl-Z keep their meaning
    modes.c_cc[VMIN] = 0;
    modes.c_cc[VTIME] = 0;
    gIsHeld = 1; // first: a signal between these lines must find something to undo
    gMayHaveChanged = 0;
    if (tcsetattr(gTerminal, TCSADRAIN, &modes) != 0) {
        gIsHeld = 0;
        return false;
    }
    WriteAll(km_HideCursor);
    return true;
}

void TermLetGoOfTerminal() {
    if (!gIsHeld || !IsForeground())
        return;
    WriteAll(km_EraseAndShowCursor);
    tcsetattr(gTerminal, TCSADRAIN, &gUsualModes);
    gIsHeld = 0;
}

void TermDraw(std::string_view inText) {
    WriteAll(inText);
}

int TermReadKey(int inMilliseconds) {
    pollfd keys = {gTerminal, POLLIN, 0};
    if (poll(&keys, 1, inMilliseconds) <= 0)
        return 0;
    unsigned char key = 0;
    return read(gTerminal, &key, 1) == 1 ? key : -1;
}
