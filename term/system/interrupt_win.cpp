#include "term/system/interrupt.h"

#include <atomic>

#include <windows.h>

#include "term/system/terminal.h"
#include "term/text/exitstatus.h"

namespace {

std::atomic<bool> gInterrupted = false;

/** Runs on a thread of its own, which Windows makes for it. */
BOOL WINAPI NoteInterrupt(DWORD inEvent) {
    const bool canGoOn = inEvent == CTRL_C_EVENT || inEvent == CTRL_BREAK_EVENT;
    if (gInterrupted.exchange(true) && canGoOn) {
        TermLetGoOfTerminal();
        TerminateProcess(GetCurrentProcess(), static_cast<UINT>(TermExit::km_Cancelled));
    }
    // The console is closed, or the session ends: Windows ends the program when this returns, or by itself
    // after some seconds. The file in hand is whole either way; given this time, the log and the totals are
    // right too.
    if (!canGoOn)
        Sleep(INFINITE);
    return TRUE;
}

} // namespace

void TermCatchInterrupts(bool /*inEndsReads*/) {
    SetConsoleCtrlHandler(&NoteInterrupt, TRUE);
}

void TermIgnoreInterrupts() {
    SetConsoleCtrlHandler(nullptr, TRUE);
}

bool TermIsInterrupted() {
    return gInterrupted;
}

void TermEndOfClosedPipe() {
    ExitProcess(static_cast<UINT>(TermExit::km_Failure));
}
