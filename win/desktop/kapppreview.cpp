#include "win/desktop/kapppreview.h"

#include <algorithm>

#include <windowsx.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "win/batch/mizeroutcome.h"
#include "win/desktop/resource.h"
#include "win/texts/pvtexts.h"
#include "wnatom/controlbitmap.h"
#include "wnatom/wnsbrbatom.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr const wchar_t* km_PreviewClass = L"ParvigifPreview";
constexpr UINT_PTR km_Timer = 1;
constexpr int km_Margin = 8; // pixels at 96 per inch, like all lengths here
constexpr int km_CaptionHeight = 20;

std::string SizeOf(const std::string& inPath) {
    const auto state = WnGetFileState(inPath.c_str());
    return state ? PvSay(PvText::km_Bytes, {SessionNumber(state->mSize)}) : "";
}

} // namespace

/** Brings the picture up to date, for a box that it may fill at most. */
void KAppPreview::Side::Render(const SIZE& inBox, double inScale) {
    if (!mIsStale && inBox.cx == mBox.cx && inBox.cy == mBox.cy)
        return;
    mPicture.Render(mMovie->GetCanvas(), static_cast<std::uint32_t>(inBox.cx),
                    static_cast<std::uint32_t>(inBox.cy), inScale);
    mBox = inBox;
    mIsStale = false;
}

KAppPreview::KAppPreview(HWND inParent) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = &KAppPreview::Procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // the arrow
    windowClass.lpszClassName = km_PreviewClass;
    RegisterClassExW(&windowClass);
    mWindow =
        CreateWindowExW(0, km_PreviewClass, L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 0, 0, inParent,
                        reinterpret_cast<HMENU>(std::intptr_t{IDC_PREVIEW}), GetModuleHandleW(nullptr), this);
    if (!mWindow)
        ThrowRuntimeError(NvLastErrno());
}

KAppPreview::~KAppPreview() {
    SetWindowLongPtrW(mWindow, GWLP_USERDATA, 0);
}

void KAppPreview::Show(const SessionList::Row& inRow) {
    const bool isSmaller = inRow.GetSaved() != 0;
    ShowText("");
    mPath = inRow.mPath;
    try {
        if (isSmaller && !inRow.mOriginalPath.empty())
            Open(mBefore, inRow.mOriginalPath, PvSay(PvText::km_Before, {SizeOf(inRow.mOriginalPath)}));
        if (inRow.mStatus != MizerStatus::km_Failed)
            Open(mAfter, inRow.mPath,
                 PvSay(isSmaller ? PvText::km_After : PvText::km_NotChanged, {SizeOf(inRow.mPath)}));
        else
            ShowText(inRow.mOutcome);
    } catch (const NvErrorCode& error) {
        ShowText(PvSay(PvText::km_CannotBeShown, {MizerErrorWords(error)}));
    }
    SetWindowTextW(mWindow,
                   mPath.empty() ? mText.c_str() : (mBefore.mCaption + L" " + mAfter.mCaption).c_str());
    Play();
}

void KAppPreview::Open(Side& outSide, const std::string& inPath, const std::string& inCaption) {
    outSide.mMovie = std::make_unique<GIFMovie>(inPath, WnGetUsualMemoryLimit());
    outSide.mCaption = NvWiden(inCaption);
    outSide.mIsStale = true;
}

void KAppPreview::ShowText(const std::string& inText) {
    Close();
    mText = NvWiden(inText);
    SetWindowTextW(mWindow, mText.c_str());
}

void KAppPreview::Release(const std::string& inPath) {
    if (mPath == inPath)
        ShowText("");
}

void KAppPreview::Close() {
    KillTimer(mWindow, km_Timer);
    for (Side* side : {&mBefore, &mAfter}) {
        side->mMovie.reset();
        side->mCaption.clear();
    }
    mPath.clear();
    mIsPaused = false;
    InvalidateRect(mWindow, nullptr, FALSE);
}

void KAppPreview::Play() {
    if (!mIsPaused && mAfter.mMovie && mAfter.mMovie->GetFrameCount() > 1)
        SetTimer(mWindow, km_Timer, mAfter.mMovie->GetDelay(), nullptr);
}

void KAppPreview::OnTimer() {
    try {
        for (Side* side : {&mBefore, &mAfter}) {
            if (!side->mMovie)
                continue;
            side->mMovie->Advance();
            side->mIsStale = true;
        }
        Play();
    } catch (const NvErrorCode& error) {
        ShowText(PvSay(PvText::km_CannotBeShown, {MizerErrorWords(error)}));
    }
    InvalidateRect(mWindow, nullptr, FALSE);
}

void KAppPreview::TogglePause() {
    mIsPaused = !mIsPaused;
    KillTimer(mWindow, km_Timer);
    Play();
}

void KAppPreview::SetScale(UINT inDPI, HFONT inFont) {
    mDPI = inDPI;
    mBefore.mIsStale = mAfter.mIsStale = true;
    mFont = inFont;
    InvalidateRect(mWindow, nullptr, FALSE);
}

void KAppPreview::OnPaint() {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(mWindow, &paint);
    RECT rect;
    GetClientRect(mWindow, &rect);
    {
        const WnSBRBAtom bits(context, rect);
        try {
            Draw(bits.GetContext(), rect);
        } catch (const NvErrorCode& error) {
            ShowText(PvSay(PvText::km_CannotBeShown, {MizerErrorWords(error)}));
        }
    }
    EndPaint(mWindow, &paint);
}

void KAppPreview::Draw(HDC inContext, const RECT& inRect) {
    FillRect(inContext, &inRect, GetSysColorBrush(COLOR_WINDOW));
    FrameRect(inContext, &inRect, GetSysColorBrush(COLOR_3DSHADOW));
    SelectObject(inContext, mFont ? mFont : GetStockObject(DEFAULT_GUI_FONT));
    SetBkMode(inContext, TRANSPARENT);
    SetTextColor(inContext, GetSysColor(COLOR_WINDOWTEXT));
    if (!mAfter.mMovie)
        DrawMiddle(inContext, mText, inRect);
    else if (!mBefore.mMovie)
        DrawSide(inContext, mAfter, inRect);
    else {
        RECT first = inRect;
        RECT second = inRect;
        if (inRect.right > inRect.bottom)
            first.right = second.left = inRect.right / 2;
        else
            first.bottom = second.top = inRect.bottom / 2;
        DrawSide(inContext, mBefore, first);
        DrawSide(inContext, mAfter, second);
    }
    if (GetFocus() == mWindow && mAfter.mMovie) {
        RECT focus = inRect;
        InflateRect(&focus, -2, -2);
        DrawFocusRect(inContext, &focus);
    }
}

void KAppPreview::DrawSide(HDC inContext, Side& ioSide, RECT inRect) const {
    InflateRect(&inRect, -Scaled(km_Margin), -Scaled(km_Margin));
    RECT caption = inRect;
    caption.bottom = caption.top + Scaled(km_CaptionHeight);
    DrawTextW(inContext, ioSide.mCaption.c_str(), -1, &caption,
              DT_CENTER | DT_TOP | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    inRect.top = caption.bottom;
    if (inRect.right <= inRect.left || inRect.bottom <= inRect.top)
        return;
    const SIZE box{inRect.right - inRect.left, inRect.bottom - inRect.top};
    ioSide.Render(box, mDPI / 96.0);
    const auto width = static_cast<LONG>(ioSide.mPicture.GetWidth());
    const auto height = static_cast<LONG>(ioSide.mPicture.GetHeight());
    const POINT place{(inRect.left + inRect.right - width) / 2, (inRect.top + inRect.bottom - height) / 2};
    WnDrawBitmap(inContext, place, ioSide.mPicture.GetPixels(), ioSide.mPicture.GetWidth(),
                 ioSide.mPicture.GetHeight());
}

/** Text of any number of lines in the middle of a rectangle. */
void KAppPreview::DrawMiddle(HDC inContext, const std::wstring& inText, RECT inRect) const {
    InflateRect(&inRect, -Scaled(2 * km_Margin), -Scaled(2 * km_Margin));
    RECT needed = inRect;
    DrawTextW(inContext, inText.c_str(), -1, &needed, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX | DT_CALCRECT);
    inRect.top = std::max(inRect.top, (inRect.top + inRect.bottom - (needed.bottom - needed.top)) / 2);
    SetTextColor(inContext, GetSysColor(COLOR_GRAYTEXT));
    DrawTextW(inContext, inText.c_str(), -1, &inRect, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
}

LRESULT CALLBACK KAppPreview::Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam) {
    if (inMessage == WM_NCCREATE) {
        const auto* const create = reinterpret_cast<const CREATESTRUCTW*>(inLParam);
        SetWindowLongPtrW(inWindow, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        static_cast<KAppPreview*>(create->lpCreateParams)->mWindow = inWindow;
    }
    auto* const preview = reinterpret_cast<KAppPreview*>(GetWindowLongPtrW(inWindow, GWLP_USERDATA));
    return preview ? preview->OnMessage(inMessage, inWParam, inLParam)
                   : DefWindowProcW(inWindow, inMessage, inWParam, inLParam);
}

LRESULT KAppPreview::OnMessage(UINT inMessage, WPARAM inWParam, LPARAM inLParam) {
    switch (inMessage) {
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        OnPaint();
        return 0;
    case WM_TIMER:
        OnTimer();
        return 0;
    case WM_KEYDOWN:
        if (inWParam == VK_SPACE)
            TogglePause();
        return 0;
    case WM_LBUTTONDOWN:
        SetFocus(mWindow);
        TogglePause();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        InvalidateRect(mWindow, nullptr, FALSE);
        return 0;
    default:
        return DefWindowProcW(mWindow, inMessage, inWParam, inLParam);
    }
}
