#pragma once

#include <memory>
#include <string>

#include <windows.h>

#include "win/session/gifmovie.h"
#include "win/session/gifpicture.h"
#include "win/session/sessionlist.h"

/** Plays a file as it was and as it is, side by side and in step, over a checkerboard. Space or a click stops
 *  and starts it. */
class KAppPreview {
public:
    /** @throws NvErrorCode  by the system's error */
    explicit KAppPreview(HWND inParent);
    ~KAppPreview();
    KAppPreview(const KAppPreview&) = delete;
    KAppPreview& operator=(const KAppPreview&) = delete;

    HWND GetWindow() const { return mWindow; }

    /** Shows the file of a row from its first frame. */
    void Show(const SessionList::Row& inRow);

    /** Shows a text alone. */
    void ShowText(const std::string& inText);

    /** Closes a file that is about to be replaced, if it is the one shown. */
    void Release(const std::string& inPath);

    void SetScale(UINT inDPI, HFONT inFont);

private:
    /** A file that plays, and how it looks now. */
    struct Side {
        std::unique_ptr<GIFMovie> mMovie;
        GIFPicture mPicture;
        SIZE mBox{}; // that the picture was made for
        bool mIsStale = true;
        std::wstring mCaption;

        void Render(const SIZE& inBox, double inScale);
    };

    static LRESULT CALLBACK Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam);
    LRESULT OnMessage(UINT inMessage, WPARAM inWParam, LPARAM inLParam);

    void Open(Side& outSide, const std::string& inPath, const std::string& inCaption);
    void Close();
    void OnTimer();
    void Play();
    void TogglePause();
    void OnPaint();
    void Draw(HDC inContext, const RECT& inRect);
    void DrawSide(HDC inContext, Side& ioSide, RECT inRect) const;
    void DrawMiddle(HDC inContext, const std::wstring& inText, RECT inRect) const;
    int Scaled(int inPixels) const { return MulDiv(inPixels, static_cast<int>(mDPI), 96); }

    HWND mWindow;
    Side mBefore, mAfter;
    std::string mPath; // of the file that is shown; empty: a text alone
    std::wstring mText;
    bool mIsPaused = false;
    UINT mDPI = 96;
    HFONT mFont = nullptr;
};
