#include "term/system/terminal.h"

#include <atomic>
#include <cstdlib>

#include <windows.h>

namespace {

std::atomic<bool> gIsHeld = false;
HANDLE gKeys = INVALID_HANDLE_VALUE;

HANDLE GetScreen() {
    return GetStdHandle(STD_ERROR_HANDLE);
}

bool IsConsole(DWORD inStream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(inStream), &mode) != 0;
}

/** Has the console follow escape sequences; only Windows 10 and later can. */
bool EnableSequences() {
    DWORD mode = 0;
    return GetConsoleMode(GetScreen(), &mode) != 0 &&
           SetConsoleMode(GetScreen(), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

/** @return what a pressed key stands for, or 0: the mouse, a released key, Shift alone */
int TakeEvent() {
    INPUT_RECORD event{};
    DWORD count = 0;
    if (!ReadConsoleInputW(gKeys, &event, 1, &count) || count == 0)
        return -1;
    if (event.EventType != KEY_EVENT || !event.Event.KeyEvent.bKeyDown)
        return 0;
    const WCHAR character = event.Event.KeyEvent.uChar.UnicodeChar;
    return character < 0x80 ? character : '?';
}

} // namespace

bool TermCanDraw(bool inReadsInput) {
    if (!IsConsole(STD_ERROR_HANDLE) || GetFileType(GetStdHandle(STD_OUTPUT_HANDLE)) == FILE_TYPE_PIPE ||
        (!inReadsInput && !IsConsole(STD_INPUT_HANDLE)))
        return false;
    if (gKeys == INVALID_HANDLE_VALUE)
        gKeys = CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_EXISTING, 0, nullptr);
    return gKeys != INVALID_HANDLE_VALUE && EnableSequences();
}

TermSize TermGetSize() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(GetScreen(), &info))
        return {80, 24};
    return {static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1),
            static_cast<std::size_t>(info.srWindow.Bottom - info.srWindow.Top + 1)};
}

bool TermShowsUtf8() {
    return GetConsoleOutputCP() == CP_UTF8;
}

bool TermWantsColours() {
    const char* value = std::getenv("NO_COLOR");
    return !value || !*value;
}

bool TermHoldTerminal() {
    if (!gIsHeld.exchange(true))
        TermDraw("\033[?25l");
    return true;
}

void TermLetGoOfTerminal() {
    if (gIsHeld.exchange(false))
        TermDraw("\033[?2026l\r\033[J\033[?25h");
}

void TermDraw(std::string_view inText) {
    DWORD written = 0;
    WriteFile(GetScreen(), inText.data(), static_cast<DWORD>(inText.size()), &written, nullptr);
}

int TermReadKey(int inMilliseconds) {
    DWORD pending = 0;
    if (WaitForSingleObject(gKeys, static_cast<DWORD>(inMilliseconds)) != WAIT_OBJECT_0)
        return 0;
    int key = 0;
    while (key == 0 && GetNumberOfConsoleInputEvents(gKeys, &pending) && pending > 0)
        key = TakeEvent();
    return key;
}
