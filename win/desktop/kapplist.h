#pragma once

#include <functional>
#include <optional>
#include <string>

#include <windows.h>

#include <commctrl.h>

#include "win/session/sessionlist.h"

/** The list view that shows a SessionList; it holds no texts itself. */
class KAppList {
public:
    /** @param inRows  borrowed
     *  @throws NvErrorCode  by the system's error */
    KAppList(HWND inParent, const SessionList& inRows);

    HWND GetWindow() const { return mWindow; }

    /** Call after rows were added, removed or reordered: shows them, with the same file selected. */
    void Refresh();

    /** Selects a row and scrolls to it. */
    void Select(std::size_t inIndex);
    std::optional<std::size_t> GetSelected() const;

    /** Scrolls to a row. */
    void Reveal(std::size_t inIndex) { ListView_EnsureVisible(mWindow, static_cast<int>(inIndex), FALSE); }

    /** Sets column widths and font for the present screen. */
    void SetScale(UINT inDPI, HFONT inFont);

    /** Moves it; the last column takes the remaining width. */
    void SetPlace(const RECT& inRect);

    /** Handles a notification from the list view. */
    LRESULT OnNotify(NMHDR* inHeader);

    std::function<void(SessionList::Column)> mOnSort;
    std::function<void()> mOnSelect;

private:
    void ShowSortArrow();
    void FillIn(LVITEMW& outItem) const;

    HWND mWindow;
    UINT mDPI = 96;
    const SessionList& mRows;
    std::string mSelectedPath; // empty: none
    bool mIsRefreshing = false;
};
