#include "win/desktop/kappstatus.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <commctrl.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "win/desktop/resource.h"

namespace {

constexpr int km_ProgressWidth = 160; // pixels at 96 per inch

} // namespace

KAppStatus::KAppStatus(HWND inParent)
    : mWindow(CreateWindowExW(0, STATUSCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0,
                              inParent, reinterpret_cast<HMENU>(std::intptr_t{IDC_STATUS}),
                              GetModuleHandleW(nullptr), nullptr)),
      mProgress(CreateWindowExW(0, PROGRESS_CLASSW, L"", WS_CHILD | PBS_SMOOTH, 0, 0, 0, 0, mWindow, nullptr,
                                GetModuleHandleW(nullptr), nullptr)) {
    if (!mWindow || !mProgress)
        ThrowRuntimeError(NvLastErrno());
}

void KAppStatus::SetText(const std::string& inText) const {
    SendMessageW(mWindow, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(NvWiden(inText).c_str()));
}

void KAppStatus::SetFont(HFONT inFont) const {
    SendMessageW(mWindow, WM_SETFONT, reinterpret_cast<WPARAM>(inFont), TRUE);
}

void KAppStatus::SetProgress(double inFraction) const {
    SendMessageW(mProgress, PBM_SETPOS, static_cast<WPARAM>(std::clamp(inFraction, 0.0, 1.0) * 100), 0);
}

void KAppStatus::ShowProgress(bool inShow) const {
    ShowWindow(mProgress, inShow ? SW_SHOW : SW_HIDE);
}

int KAppStatus::LayOut(UINT inDPI) const {
    const auto scaled = [inDPI](int pixels) { return MulDiv(pixels, static_cast<int>(inDPI), 96); };
    SendMessageW(mWindow, WM_SIZE, 0, 0);
    RECT rect{};
    GetWindowRect(mWindow, &rect);
    const int progressLeft = static_cast<int>(rect.right - rect.left) - scaled(km_ProgressWidth + 20);
    const std::array<int, 2> parts = {progressLeft, -1};
    SendMessageW(mWindow, SB_SETPARTS, parts.size(), reinterpret_cast<LPARAM>(parts.data()));
    RECT place{};
    SendMessageW(mWindow, SB_GETRECT, 1, reinterpret_cast<LPARAM>(&place));
    MoveWindow(mProgress, place.left + scaled(2), place.top + scaled(3), scaled(km_ProgressWidth),
               place.bottom - place.top - scaled(6), TRUE);
    return rect.bottom - rect.top;
}
