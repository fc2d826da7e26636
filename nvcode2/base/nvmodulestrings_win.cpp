#include "nvcode2/base/nvmodulestrings_win.h"

#include <windows.h>

NvModuleStrings NvModuleStrings::OfThisProgram() {
    return NvModuleStrings(GetModuleHandleW(nullptr));
}

NvStringBlock NvModuleStrings::FindBlock(std::uint32_t inStringID) const {
    const auto module = static_cast<HMODULE>(mModule);
    const auto block = static_cast<WORD>(inStringID / 16 + 1);
    SetLastError(ERROR_SUCCESS);
    const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(block), MAKEINTRESOURCEA(6)); // RT_STRING
    const DWORD size = found ? SizeofResource(module, found) : 0;
    return {found != nullptr, static_cast<std::uint32_t>(size), static_cast<std::int32_t>(GetLastError())};
}

std::uint32_t NvModuleStrings::LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const {
    const int length =
        LoadStringA(static_cast<HINSTANCE>(mModule), inStringID, outText, static_cast<int>(inSize));
    return length > 0 ? static_cast<std::uint32_t>(length) : 0;
}
