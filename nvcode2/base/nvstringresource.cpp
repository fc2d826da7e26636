#include "nvcode2/base/nvstringresource.h"

#include <algorithm>
#include <string_view>

/** Null when there is no such text. */
const char* NvStringTable::Find(std::uint32_t inStringID) const {
    const auto found = std::ranges::lower_bound(mEntries, inStringID, {}, &Entry::mStringID);
    return found != mEntries.end() && found->mStringID == inStringID ? found->mText : nullptr;
}

NvStringBlock NvStringTable::FindBlock(std::uint32_t inStringID) const {
    const char* const text = Find(inStringID);
    if (!text)
        return {};
    return {true, static_cast<std::uint32_t>(std::string_view(text).size() + 1), 0};
}

std::uint32_t NvStringTable::LoadText(std::uint32_t inStringID, char* outText, std::uint32_t inSize) const {
    const char* const text = Find(inStringID);
    if (!text || inSize == 0)
        return 0;
    const std::size_t length = std::string_view(text).copy(outText, inSize - 1);
    outText[length] = '\0';
    return static_cast<std::uint32_t>(length);
}
