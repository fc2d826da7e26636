#include "win/desktop/killer.h"

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"

void KillerFatalError(const char* inText) {
    if (inText)
        MessageBoxW(nullptr, NvWiden(inText).c_str(), L"Fatal Error", MB_ICONHAND | MB_TASKMODAL);
    ExitProcess(1);
}

void KillerShowOutOfMemory(void* inOwner) {
    MessageBoxW(static_cast<HWND>(inOwner), L"Out of Availible Memory", L"Parvigif", MB_ICONHAND);
}
