#include "win/desktop/killer.h"

#include <windows.h>

namespace {

void Show(HWND inOwner, PvText inText, PvText inCaption, UINT inFlags) {
    wchar_t text[100] = L"";
    wchar_t caption[100] = L"";
    LoadStringW(GetModuleHandleW(nullptr), static_cast<UINT>(inText), text, 100);
    LoadStringW(GetModuleHandleW(nullptr), static_cast<UINT>(inCaption), caption, 100);
    MessageBoxW(inOwner, text, caption, inFlags);
}

} // namespace

void KillerFatalError(PvText inText) {
    if (inText != PvText::km_None)
        Show(nullptr, inText, PvText::km_FatalError, MB_ICONHAND | MB_TASKMODAL);
    ExitProcess(1);
}

void KillerShowOutOfMemory(void* inOwner) {
    Show(static_cast<HWND>(inOwner), PvText::km_OutOfMemory, PvText::km_Parvigif, MB_ICONHAND);
}
