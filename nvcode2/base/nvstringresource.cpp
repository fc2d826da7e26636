#include "nvcode2/base/nvstringresource.h"

#include <utility>

NvStringTable::NvStringTable(std::map<std::uint32_t, std::string> inTexts) : mTexts(std::move(inTexts)) {}

NvStringBlock NvStringTable::FindBlock(std::uint32_t inStringID) const {
    const auto found = mTexts.find(inStringID);
    if (found == mTexts.end())
        return {};
    return {true, static_cast<std::uint32_t>(found->second.size() + 1), 0};
}

std::uint32_t NvStringTable::LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const {
    const auto found = mTexts.find(inStringID);
    if (found == mTexts.end() || inSize == 0)
        return 0;
    const std::size_t length = found->second.copy(outText, inSize - 1);
    outText[length] = '\0';
    return static_cast<std::uint32_t>(length);
}
