#include "win/desktop/kapplist.h"

#include <algorithm>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "win/desktop/resource.h"
#include "win/texts/pvtexts.h"

namespace {

int CountColumns() {
    return static_cast<int>(SessionList::GetColumns().size());
}

/** Pixels for a column on a screen of inDPI dots per inch. */
int GetWidth(int inColumn, UINT inDPI) {
    const SessionList::Definition& column = SessionList::GetColumns()[static_cast<std::size_t>(inColumn)];
    return MulDiv(column.mWidth, static_cast<int>(inDPI), 96);
}

} // namespace

KAppList::KAppList(HWND inParent, const SessionList& inRows)
    : mWindow(CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, NvWiden(PvSay(PvText::km_SessionFiles)).c_str(),
                              WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                                  LVS_SINGLESEL | LVS_SHOWSELALWAYS,
                              0, 0, 0, 0, inParent, reinterpret_cast<HMENU>(std::intptr_t{IDC_SESSION_LIST}),
                              GetModuleHandleW(nullptr), nullptr)),
      mRows(inRows) {
    if (!mWindow)
        ThrowRuntimeError(NvLastErrno());
    ListView_SetExtendedListViewStyle(mWindow, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP);
    WPARAM index = 0;
    for (const SessionList::Definition& definition : SessionList::GetColumns()) {
        std::wstring heading = NvWiden(PvSay(definition.mHeading));
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_FMT;
        column.fmt = definition.mIsNumber ? LVCFMT_RIGHT : LVCFMT_LEFT;
        column.pszText = heading.data();
        SendMessageW(mWindow, LVM_INSERTCOLUMNW, index++, reinterpret_cast<LPARAM>(&column));
    }
}

void KAppList::SetScale(UINT inDPI, HFONT inFont) {
    mDPI = inDPI;
    SendMessageW(mWindow, WM_SETFONT, reinterpret_cast<WPARAM>(inFont), TRUE);
    for (int i = 0; i < CountColumns(); ++i)
        ListView_SetColumnWidth(mWindow, i, GetWidth(i, inDPI));
}

void KAppList::SetPlace(const RECT& inRect) {
    MoveWindow(mWindow, inRect.left, inRect.top, inRect.right - inRect.left, inRect.bottom - inRect.top,
               TRUE);
    RECT client{};
    GetClientRect(mWindow, &client);
    int rest = client.right - GetSystemMetricsForDpi(SM_CXVSCROLL, mDPI);
    const int last = CountColumns() - 1;
    for (int i = 0; i < last; ++i)
        rest -= ListView_GetColumnWidth(mWindow, i);
    ListView_SetColumnWidth(mWindow, last, std::max(rest, GetWidth(last, mDPI)));
}

void KAppList::Refresh() {
    mIsRefreshing = true;
    ListView_SetItemCountEx(mWindow, static_cast<int>(mRows.GetCount()), LVSICF_NOSCROLL);
    ListView_SetItemState(mWindow, -1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    for (std::size_t i = 0; i < mRows.GetCount() && !mSelectedPath.empty(); ++i) {
        if (mRows.GetRow(i).mPath == mSelectedPath)
            ListView_SetItemState(mWindow, static_cast<int>(i), LVIS_SELECTED | LVIS_FOCUSED,
                                  LVIS_SELECTED | LVIS_FOCUSED);
    }
    mIsRefreshing = false;
    ShowSortArrow();
    InvalidateRect(mWindow, nullptr, FALSE);
}

void KAppList::Select(std::size_t inIndex) {
    const int index = static_cast<int>(inIndex);
    ListView_SetItemState(mWindow, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    Reveal(inIndex);
}

std::optional<std::size_t> KAppList::GetSelected() const {
    const int index = ListView_GetNextItem(mWindow, -1, LVNI_SELECTED);
    return index >= 0 ? std::optional(static_cast<std::size_t>(index)) : std::nullopt;
}

void KAppList::ShowSortArrow() {
    const HWND header = ListView_GetHeader(mWindow);
    for (int i = 0; i < CountColumns(); ++i) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        if (mRows.IsSorted() && static_cast<int>(mRows.GetSortColumn()) == i)
            item.fmt |= mRows.IsAscending() ? HDF_SORTUP : HDF_SORTDOWN;
        SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
    }
}

LRESULT KAppList::OnNotify(NMHDR* inHeader) {
    switch (inHeader->code) {
    case LVN_GETDISPINFOW:
        FillIn(reinterpret_cast<NMLVDISPINFOW*>(inHeader)->item);
        break;
    case LVN_COLUMNCLICK:
        mOnSort(static_cast<SessionList::Column>(reinterpret_cast<NMLISTVIEW*>(inHeader)->iSubItem));
        break;
    case LVN_ITEMCHANGED: {
        if (mIsRefreshing)
            break;
        const auto selected = GetSelected();
        const std::string path = selected ? mRows.GetRow(*selected).mPath : "";
        if (path != mSelectedPath) {
            mSelectedPath = path;
            mOnSelect();
        }
        break;
    }
    default:
        break;
    }
    return 0;
}

void KAppList::FillIn(LVITEMW& outItem) const {
    const auto row = static_cast<std::size_t>(outItem.iItem);
    if ((outItem.mask & LVIF_TEXT) == 0 || outItem.cchTextMax <= 0 || row >= mRows.GetCount())
        return;
    const std::wstring text = NvWiden(mRows.GetText(row, static_cast<SessionList::Column>(outItem.iSubItem)));
    const std::size_t size = std::min(text.size(), static_cast<std::size_t>(outItem.cchTextMax) - 1);
    *std::copy_n(text.begin(), size, outItem.pszText) = L'\0';
}
