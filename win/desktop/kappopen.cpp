#include "win/desktop/kappopen.h"

#include <memory>
#include <new>

#include <cderr.h>
#include <commdlg.h>
#include <shlobj.h>

#include "nvcode2/base/nvwindows_win.h"
#include "win/texts/pvtexts.h"

namespace {

constexpr std::size_t km_SelectionSize = 1 << 20; // characters; thousands of names

/** Takes "folder NUL name NUL name NUL NUL", or one path, apart. */
std::vector<std::string> SplitSelection(const wchar_t* inSelection) {
    const std::wstring first = inSelection;
    std::vector<std::string> paths;
    for (const wchar_t* name = inSelection + first.size() + 1; *name; name += wcslen(name) + 1)
        paths.push_back(NvNarrow(first + (first.ends_with(L'\\') ? L"" : L"\\") + name));
    if (paths.empty())
        paths.push_back(NvNarrow(first));
    return paths;
}

} // namespace

std::vector<std::string> KAppChooseFiles(HWND inOwner) {
    using namespace std::string_literals;
    std::vector<wchar_t> selection(km_SelectionSize);
    const std::wstring filter = NvWiden(PvSay(PvText::km_GIFFiles)) + L"\0*.GIF\0"s;
    const std::wstring title = NvWiden(PvSay(PvText::km_ChooseFiles));
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = inOwner;
    dialog.lpstrFilter = filter.c_str();
    dialog.lpstrFile = selection.data();
    dialog.nMaxFile = static_cast<DWORD>(selection.size());
    dialog.lpstrTitle = title.c_str();
    dialog.Flags =
        OFN_ALLOWMULTISELECT | OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    if (GetOpenFileNameW(&dialog))
        return SplitSelection(selection.data());
    if (CommDlgExtendedError() == FNERR_BUFFERTOOSMALL)
        throw std::bad_alloc();
    return {};
}

std::string KAppChooseFolder(HWND inOwner) {
    const std::wstring title = NvWiden(PvSay(PvText::km_ChooseFolder));
    BROWSEINFOW browse{};
    browse.hwndOwner = inOwner;
    browse.lpszTitle = title.c_str();
    browse.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    const std::unique_ptr<ITEMIDLIST, decltype(&CoTaskMemFree)> chosen(SHBrowseForFolderW(&browse),
                                                                       &CoTaskMemFree);
    wchar_t path[MAX_PATH] = L"";
    if (!chosen || !SHGetPathFromIDListW(chosen.get(), path))
        return "";
    return NvNarrow(path);
}

std::vector<std::string> KAppTakeDropped(HDROP inDrop) {
    std::vector<std::string> paths;
    const UINT count = DragQueryFileW(inDrop, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        std::wstring path(DragQueryFileW(inDrop, i, nullptr, 0) + 1, L'\0');
        path.resize(DragQueryFileW(inDrop, i, path.data(), static_cast<UINT>(path.size())));
        paths.push_back(NvNarrow(path));
    }
    DragFinish(inDrop);
    return paths;
}

std::vector<std::string> KAppGetArguments() {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> names;
    for (int i = 1; arguments && i < count; ++i)
        names.push_back(NvNarrow(arguments.get()[i]));
    return names;
}
