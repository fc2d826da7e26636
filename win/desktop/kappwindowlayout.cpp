// Where everything in the main window is, on screens of any resolution.

#include <algorithm>

#include "win/desktop/kappplacement.h"
#include "win/desktop/kappwindow.h"

namespace {

constexpr int km_DesiredWidth = 980; // pixels at 96 per inch, like all lengths here
constexpr int km_DesiredHeight = 600;
constexpr int km_MinimumHeight = 380;
constexpr int km_Gap = 6;

} // namespace

void KAppWindow::SetScale(UINT inDPI) {
    mDPI = inDPI;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof(metrics);
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0, inDPI);
    const HFONT before = mFont;
    mFont = CreateFontIndirectW(&metrics.lfMessageFont);
    mPanel.SetScale(inDPI);
    mList->SetScale(inDPI, mFont);
    mPreview->SetScale(inDPI, mFont);
    mStatus->SetFont(mFont);
    if (before)
        DeleteObject(before);
    LayOut();
}

void KAppWindow::LayOut() {
    const auto scaled = [this](int pixels) { return MulDiv(pixels, static_cast<int>(mDPI), 96); };
    const int statusHeight = mStatus->LayOut(mDPI);
    RECT client{};
    GetClientRect(mWindow, &client);
    const int gap = scaled(km_Gap);
    const SIZE panel = mPanel.GetSize();
    const int top = panel.cy + gap;
    const int height = std::max(0L, client.bottom - statusHeight - gap - top);
    const int listWidth = std::max(0L, (client.right - 3 * gap) * 3 / 5);
    MoveWindow(mPanel.GetWindow(), 0, 0, panel.cx, panel.cy, TRUE);
    mList->SetPlace({gap, top, gap + listWidth, top + height});
    const int left = 2 * gap + listWidth;
    MoveWindow(mPreview->GetWindow(), left, top, std::max(0L, client.right - gap - left), height, TRUE);
}

/** Room for the whole panel, and some of the list below it. */
POINT KAppWindow::GetLeastSize() const {
    RECT rect{0, 0, mPanel.GetWindow() ? mPanel.GetSize().cx : 0, 0};
    AdjustWindowRectExForDpi(&rect, WS_OVERLAPPEDWINDOW, TRUE, 0, mDPI);
    return {rect.right - rect.left, MulDiv(km_MinimumHeight, static_cast<int>(mDPI), 96)};
}

void KAppWindow::Show(int inShowCommand) {
    if (!KAppRestorePlacement(mWindow)) {
        SetWindowPos(mWindow, nullptr, 0, 0, MulDiv(km_DesiredWidth, static_cast<int>(mDPI), 96),
                     MulDiv(km_DesiredHeight, static_cast<int>(mDPI), 96), SWP_NOMOVE | SWP_NOZORDER);
        ShowWindow(mWindow, inShowCommand);
    }
    SetFocus(mList->GetWindow());
    UpdateWindow(mWindow);
}
