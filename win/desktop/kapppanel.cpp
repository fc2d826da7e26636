#include "win/desktop/kapppanel.h"

#include "nvcode2/base/nvwindows_win.h"
#include "win/desktop/resource.h"

void KAppPanel::SetText(MizerControl inControl, const char* inText) {
    if (!GetWindow())
        return;
    const HWND control = GetControl(static_cast<int>(inControl));
    SetWindowTextW(control, NvWiden(inText).c_str());
    UpdateWindow(control); // while a file is worked on, painting has to wait
}

void KAppPanel::OnInit() {
    EnableButtons(false);
    mMadeFor = GetDpiForWindow(GetWindow());
    mMadeSize = GetSize();
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(GetWindow(), WM_GETFONT, 0, 0)), sizeof(mMadeFont),
               &mMadeFont);
    for (HWND control = ::GetWindow(GetWindow(), GW_CHILD); control;
         control = ::GetWindow(control, GW_HWNDNEXT)) {
        RECT rect{};
        GetWindowRect(control, &rect);
        MapWindowPoints(nullptr, GetWindow(), reinterpret_cast<POINT*>(&rect), 2);
        mMadePlaces.push_back({control, rect});
    }
}

void KAppPanel::SetScale(UINT inDPI) {
    const auto scaled = [&](LONG inLength) {
        return MulDiv(static_cast<int>(inLength), static_cast<int>(inDPI), static_cast<int>(mMadeFor));
    };
    LOGFONTW form = mMadeFont;
    form.lfHeight = scaled(form.lfHeight);
    decltype(mFont) font(CreateFontIndirectW(&form), &DeleteObject);
    for (const Place& place : mMadePlaces) {
        const RECT& rect = place.mRect;
        SetWindowPos(place.mControl, nullptr, scaled(rect.left), scaled(rect.top),
                     scaled(rect.right - rect.left), scaled(rect.bottom - rect.top),
                     SWP_NOZORDER | SWP_NOACTIVATE);
        SendMessageW(place.mControl, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
    }
    mFont = std::move(font);
    SetWindowPos(GetWindow(), nullptr, 0, 0, scaled(mMadeSize.cx), scaled(mMadeSize.cy),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
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
