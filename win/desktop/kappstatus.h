#pragma once

#include <string>

#include <windows.h>

/** The status bar at the foot of the main window: a text, and the progress of the current file. */
class KAppStatus {
public:
    /** @throws NvErrorCode */
    explicit KAppStatus(HWND inParent);

    void SetText(const std::string& inText) const;
    void SetFont(HFONT inFont) const;

    /** inFraction is clamped to 0 to 1. */
    void SetProgress(double inFraction) const;
    void ShowProgress(bool inShow) const;

    /** Fits it into the parent's present size. @return its height in pixels */
    int LayOut(UINT inDPI) const;

private:
    HWND mWindow;
    HWND mProgress;
};
