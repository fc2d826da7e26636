#include "term/interrupt.h"

#include <csignal>
#include <initializer_list>

#include <signal.h>

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void NoteInterrupt(int /*inSignal*/) {
    gInterrupted = 1;
}

} // namespace

void TermCatchInterrupts() {
    struct sigaction action {};
    action.sa_handler = NoteInterrupt;
    // Reset: the second one finds the default, which ends the program. Restart: no file operation fails of
    // it.
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present {};
        sigaction(signal, nullptr, &present);
        if (present.sa_handler != SIG_IGN) // nohup, or a background job of a simple shell, wants it so
            sigaction(signal, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
}

bool TermIsInterrupted() {
    return gInterrupted != 0;
}

void TermEndOfClosedPipe() {
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
}
