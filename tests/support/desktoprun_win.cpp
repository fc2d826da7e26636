#include "tests/support/desktoprun_win.h"

#include <cstring>

#include <commctrl.h>
#include <shellapi.h>
#include <shlobj.h>

#include "win/desktop/resource.h"

namespace {

constexpr std::size_t km_TextSize = 512; // characters

/** Memory in the program, for messages whose answers Windows does not carry over. */
class RemoteMemory {
public:
    RemoteMemory(HANDLE inProcess, std::size_t inSize)
        : mProcess(inProcess),
          mMemory(VirtualAllocEx(inProcess, nullptr, inSize, MEM_COMMIT, PAGE_READWRITE)) {}
    ~RemoteMemory() { VirtualFreeEx(mProcess, mMemory, 0, MEM_RELEASE); }
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;

    char* Get() const { return static_cast<char*>(mMemory); }
    void Write(const void* inFrom, std::size_t inSize) const {
        WriteProcessMemory(mProcess, mMemory, inFrom, inSize, nullptr);
    }
    std::string ReadText(std::size_t inOffset) const {
        std::array<wchar_t, km_TextSize + 1> text{};
        ReadProcessMemory(mProcess, Get() + inOffset, text.data(), km_TextSize * sizeof(wchar_t), nullptr);
        return NvNarrow(text.data());
    }

private:
    HANDLE mProcess;
    void* mMemory;
};

struct Search {
    DWORD mProcess;
    const wchar_t* mClass;
    std::wstring mTitle;
    HWND mFound;
};

BOOL CALLBACK LookAt(HWND inWindow, LPARAM inSearch) {
    auto& search = *reinterpret_cast<Search*>(inSearch);
    DWORD process = 0;
    std::array<wchar_t, 64> name{};
    std::array<wchar_t, 256> title{};
    GetWindowThreadProcessId(inWindow, &process);
    GetClassNameW(inWindow, name.data(), static_cast<int>(name.size()));
    GetWindowTextW(inWindow, title.data(), static_cast<int>(title.size()));
    if (process != search.mProcess || !IsWindowVisible(inWindow) ||
        std::wcscmp(name.data(), search.mClass) != 0 || search.mTitle != title.data())
        return TRUE;
    search.mFound = inWindow;
    return FALSE;
}

HWND Find(DWORD inProcess, const wchar_t* inClass, const std::string& inTitle) {
    Search search{inProcess, inClass, NvWiden(inTitle), nullptr};
    EnumWindows(&LookAt, reinterpret_cast<LPARAM>(&search));
    return search.mFound;
}

} // namespace

DesktopRun::DesktopRun(const std::vector<std::string>& inNames) {
    std::string line = "Parvigif.exe";
    for (const std::string& name : inNames)
        line += " \"" + name + "\"";
    std::wstring wideLine = NvWiden(line);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    EXPECT_TRUE(CreateProcessW(NvWiden(PARVIGIF_DESKTOP).c_str(), wideLine.data(), nullptr, nullptr, FALSE, 0,
                               nullptr, nullptr, &startup, &mProcess));
    WaitFor("the window", [this] {
        mWindow = Find(mProcess.dwProcessId, L"Parvigif", "Parvigif");
        return mWindow != nullptr;
    });
}

DesktopRun::~DesktopRun() {
    TerminateProcess(mProcess.hProcess, 99);
    WaitForSingleObject(mProcess.hProcess, INFINITE);
    CloseHandle(mProcess.hProcess);
    CloseHandle(mProcess.hThread);
}

void DesktopRun::MoveToScreen(int inDPI, RECT inPlace) const {
    const RemoteMemory place(mProcess.hProcess, sizeof(inPlace));
    place.Write(&inPlace, sizeof(inPlace));
    SendMessageW(mWindow, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(inDPI, inDPI)),
                 reinterpret_cast<LPARAM>(place.Get()));
}

/** Under Wine the memory of a drop is not carried over with the message, so it is made in the program. Any
 *  address there does as a handle: it stands for memory that does not move. */
void DesktopRun::Drop(const std::vector<std::string>& inPaths) const {
    std::wstring names;
    for (const std::string& path : inPaths)
        names += NvWiden(path) + L'\0';
    names += L'\0';
    std::vector<char> drop(sizeof(DROPFILES) + names.size() * sizeof(wchar_t));
    DROPFILES head{};
    head.pFiles = sizeof(head);
    head.fWide = TRUE;
    std::memcpy(drop.data(), &head, sizeof(head));
    std::memcpy(drop.data() + sizeof(head), names.data(), drop.size() - sizeof(head));
    void* const memory = VirtualAllocEx(mProcess.hProcess, nullptr, drop.size(), MEM_COMMIT, PAGE_READWRITE);
    WriteProcessMemory(mProcess.hProcess, memory, drop.data(), drop.size(), nullptr);
    PostMessageW(mWindow, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
}

bool DesktopRun::HasDialog(const std::string& inTitle) const {
    return Find(mProcess.dwProcessId, L"#32770", inTitle) != nullptr;
}

HWND DesktopRun::WaitForDialog(const std::string& inTitle) const {
    WaitFor(inTitle.c_str(), [&] { return HasDialog(inTitle); });
    return Find(mProcess.dwProcessId, L"#32770", inTitle);
}

void DesktopRun::Click(HWND inDialog, int inControl) {
    SendMessageW(GetDlgItem(inDialog, inControl), BM_CLICK, 0, 0);
}

bool DesktopRun::IsChecked(HWND inDialog, int inControl) {
    return SendMessageW(GetDlgItem(inDialog, inControl), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool DesktopRun::IsEnabled(HWND inDialog, int inControl) {
    return IsWindowEnabled(GetDlgItem(inDialog, inControl)) != FALSE;
}

std::string DesktopRun::GetText(HWND inControl) {
    std::array<wchar_t, km_TextSize> text{};
    SendMessageW(inControl, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return NvNarrow(text.data());
}

std::string DesktopRun::GetStatus() const {
    const RemoteMemory memory(mProcess.hProcess, (km_TextSize + 1) * sizeof(wchar_t));
    SendMessageW(GetDlgItem(mWindow, IDC_STATUS), SB_GETTEXTW, 0, reinterpret_cast<LPARAM>(memory.Get()));
    return memory.ReadText(0);
}

int DesktopRun::CountRows() const {
    return static_cast<int>(SendMessageW(GetDlgItem(mWindow, IDC_SESSION_LIST), LVM_GETITEMCOUNT, 0, 0));
}

std::string DesktopRun::GetCell(int inRow, int inColumn) const {
    const RemoteMemory memory(mProcess.hProcess, sizeof(LVITEMW) + (km_TextSize + 1) * sizeof(wchar_t));
    LVITEMW item{};
    item.iSubItem = inColumn;
    item.cchTextMax = static_cast<int>(km_TextSize);
    item.pszText = reinterpret_cast<wchar_t*>(memory.Get() + sizeof(item));
    memory.Write(&item, sizeof(item));
    SendMessageW(GetDlgItem(mWindow, IDC_SESSION_LIST), LVM_GETITEMTEXTW, static_cast<WPARAM>(inRow),
                 reinterpret_cast<LPARAM>(memory.Get()));
    return memory.ReadText(sizeof(item));
}

std::string DesktopRun::GetPreviewText() const {
    return GetText(GetDlgItem(mWindow, IDC_PREVIEW));
}

void DesktopRun::WaitFor(const char* inWhat, const std::function<bool()>& inCondition) {
    constexpr int tries = 6000;
    for (int i = 0; i < tries; ++i) {
        if (inCondition())
            return;
        Sleep(20);
    }
    FAIL() << "waited in vain for " << inWhat;
}

DWORD DesktopRun::Close() {
    PostMessageW(mWindow, WM_CLOSE, 0, 0);
    return WaitForExit();
}

DWORD DesktopRun::WaitForExit() {
    WaitFor("the end", [this] { return WaitForSingleObject(mProcess.hProcess, 0) == WAIT_OBJECT_0; });
    DWORD status = 98;
    GetExitCodeProcess(mProcess.hProcess, &status);
    return status;
}
