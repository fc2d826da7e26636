#include "term/system/interrupt.h"

#include <csignal>

#include "term/system/signals_posix.h"
#include "term/system/terminal.h"

namespace {

volatile std::sig_atomic_t gInterrupted = 0;
volatile std::sig_atomic_t gAsked = 0;

/** The second one ends the program as if nothing caught it, so that the caller sees what did. Every file is
 *  whole at every moment. */
extern "C" void NoteInterrupt(int inSignal) {
    if (gAsked) {
        TermLetGoOfTerminal();
        TermRaiseWithDefault(inSignal);
    }
    gAsked = 1;
    gInterrupted = 1;
}

/** A terminal that goes away says so twice: once itself, once through its shell. */
extern "C" void NoteHangup(int /*inSignal*/) {
    gInterrupted = 1;
}

} // namespace

void TermCatchInterrupts(bool inEndsReads) {
    TermCatchSignal(SIGINT, NoteInterrupt, inEndsReads);
    TermCatchSignal(SIGTERM, NoteInterrupt, inEndsReads);
    TermCatchSignal(SIGHUP, NoteHangup, inEndsReads);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit fails instead, like one to a full disk
}

void TermIgnoreInterrupts() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
}

bool TermIsInterrupted() {
    return gInterrupted != 0;
}

void TermEndOfClosedPipe() {
    TermRaiseWithDefault(SIGPIPE);
}
