#include "win/kapppanel.h"

#include "nvcode2/nvwindows_win.h"
#include "win/resource.h"

void KAppPanel::SetText(MizerControl inControl, const char* inText) {
    const HWND control = GetControl(static_cast<int>(inControl));
    SetWindowTextW(control, NvWiden(inText).c_str());
    UpdateWindow(control); // while a file is worked on, nobody paints for a while
}

void KAppPanel::EnableButtons(bool inEnable) {
    EnableWindow(GetControl(IDC_PAUSE), inEnable);
    EnableWindow(GetControl(IDC_CANCEL), inEnable);
}

SIZE KAppPanel::GetSize() const {
    RECT rect{};
    GetWindowRect(GetWindow(), &rect);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void KAppPanel::OnClick(int inControl) {
    if (inControl == IDC_PAUSE)
        mOnPause();
    else if (inControl == IDC_CANCEL)
        mOnCancel();
}
