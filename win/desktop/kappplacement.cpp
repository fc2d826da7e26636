#include "win/desktop/kappplacement.h"

#include <array>
#include <cstdio>
#include <string>

#include "win/batch/mizerpreferences.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnprefkey.h"

namespace {

constexpr const char* km_Name = "WINDOW"; // "left top right bottom maximized dpi"

/** The key of this user alone, who has this screen. */
WnPrefKey MakeKey() {
    return WnPrefKey(MizerOpenPreferences().GetKeyPath());
}

} // namespace

void KAppStorePlacement(HWND inWindow) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    GetWindowPlacement(inWindow, &placement);
    const RECT& rect = placement.rcNormalPosition;
    std::array<char, 100> text{};
    std::snprintf(text.data(), text.size(), "%ld %ld %ld %ld %d %u", rect.left, rect.top, rect.right,
                  rect.bottom, placement.showCmd == SW_SHOWMAXIMIZED ? 1 : 0, GetDpiForWindow(inWindow));
    WnPrefKey key = MakeKey();
    if (key.OpenKey(WnPrefKey::km_User, WnPrefKey::km_ReadWrite))
        key.WriteString(km_Name, text.data());
}

bool KAppRestorePlacement(HWND inWindow) {
    WnPrefKey key = MakeKey();
    std::string text;
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    RECT& rect = placement.rcNormalPosition;
    int isMaximized = 0;
    int dpi = 0;
    if (!key.OpenKey(WnPrefKey::km_User, WnPrefKey::km_Read) || !key.ReadString(km_Name, text) ||
        std::sscanf(text.c_str(), "%ld %ld %ld %ld %d %d", &rect.left, &rect.top, &rect.right, &rect.bottom,
                    &isMaximized, &dpi) != 6 ||
        dpi <= 0 || rect.left >= rect.right || rect.top >= rect.bottom ||
        !MonitorFromRect(&rect, MONITOR_DEFAULTTONULL))
        return false;
    const int present = static_cast<int>(GetDpiForWindow(inWindow));
    rect.right = rect.left + MulDiv(rect.right - rect.left, present, dpi);
    rect.bottom = rect.top + MulDiv(rect.bottom - rect.top, present, dpi);
    placement.showCmd = isMaximized != 0 ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL;
    return SetWindowPlacement(inWindow, &placement) != FALSE;
}
