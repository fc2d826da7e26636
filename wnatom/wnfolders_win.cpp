#include "wnatom/wnfolders_win.h"

#include <random>
#include <string_view>

#include <windows.h>

std::wstring WnGetTemporaryFolder() {
    std::wstring folder(MAX_PATH + 1, L'\0');
    folder.resize(GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    if (!folder.empty() && folder.back() == L'\\')
        folder.pop_back();
    return folder;
}

std::wstring WnGetFolderOf(const std::wstring& inPath) {
    return inPath.substr(0, inPath.find_last_of(L"\\/:") + 1);
}

std::wstring WnGetRandomName() {
    constexpr std::wstring_view letters = L"abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::wstring name;
    while (name.size() < km_RandomNameSize)
        name += letters[random() % letters.size()];
    return name;
}
