#include "win/desktop/kapplist.h"

#include <algorithm>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"
#include "win/desktop/resource.h"

namespace {

struct Heading {
    const wchar_t* mText;
    int mFormat;
    int mWidth; // pixels at 96 per inch
};

constexpr int km_ColumnCount = static_cast<int>(SessionList::km_ColumnCount);

constexpr Heading km_Headings[SessionList::km_ColumnCount] = {
    {L"Name", LVCFMT_LEFT, 132},  {L"Original", LVCFMT_RIGHT, 68}, {L"New", LVCFMT_RIGHT, 68},
    {L"Saved", LVCFMT_RIGHT, 68}, {L"%", LVCFMT_RIGHT, 52},        {L"Outcome", LVCFMT_LEFT, 130},
};

} // namespace

KAppList::KAppList(HWND inParent, const SessionList& inRows)
    : mWindow(CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, L"Files of this session",
                              WS_CHILD | WS_VISIBLE | WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA |
                                  LVS_SINGLESEL | LVS_SHOWSELALWAYS,
                              0, 0, 0, 0, inParent, reinterpret_cast<HMENU>(std::intptr_t{IDC_SESSION_LIST}),
                              GetModuleHandleW(nullptr), nullptr)),
      mRows(inRows) {
    if (!mWindow)
        ThrowRuntimeError(NvLastErrno());
    ListView_SetExtendedListViewStyle(mWindow, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP);
    for (int i = 0; i < km_ColumnCount; ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_FMT;
        column.fmt = km_Headings[i].mFormat;
        column.pszText = const_cast<wchar_t*>(km_Headings[i].mText);
        SendMessageW(mWindow, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    }
}

void KAppList::SetScale(UINT inDPI, HFONT inFont) {
    mDPI = inDPI;
    SendMessageW(mWindow, WM_SETFONT, reinterpret_cast<WPARAM>(inFont), TRUE);
    for (int i = 0; i < km_ColumnCount; ++i)
        ListView_SetColumnWidth(mWindow, i, MulDiv(km_Headings[i].mWidth, static_cast<int>(inDPI), 96));
}

void KAppList::SetPlace(const RECT& inRect) {
    MoveWindow(mWindow, inRect.left, inRect.top, inRect.right - inRect.left, inRect.bottom - inRect.top,
               TRUE);
    RECT client{};
    GetClientRect(mWindow, &client);
    int rest = client.right - GetSystemMetricsForDpi(SM_CXVSCROLL, mDPI);
    for (int i = 0; i < km_ColumnCount - 1; ++i)
        rest -= ListView_GetColumnWidth(mWindow, i);
    ListView_SetColumnWidth(
        mWindow, km_ColumnCount - 1,
        std::max(rest, MulDiv(km_Headings[km_ColumnCount - 1].mWidth, static_cast<int>(mDPI), 96)));
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
    for (int i = 0; i < km_ColumnCount; ++i) {
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
