#include "term/system/signals_posix.h"

#include <csignal>

#include <signal.h>

void TermCatchSignal(int inSignal, void (*inHandler)(int), bool inEndsReads) {
    struct sigaction present {};
    sigaction(inSignal, nullptr, &present);
    if (present.sa_handler == SIG_IGN)
        return;
    struct sigaction action {};
    action.sa_handler = inHandler;
    action.sa_flags = inEndsReads ? 0 : SA_RESTART;
    sigaction(inSignal, &action, nullptr);
}

void TermRaiseWithDefault(int inSignal) {
    std::signal(inSignal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, inSignal);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(inSignal);
}
