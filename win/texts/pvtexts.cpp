#include "win/texts/pvtexts.h"

#include <string_view>

#include "nvcode2/base/nvstring.h"

std::string PvSay(PvText inText, std::initializer_list<std::string> inParts) {
    constexpr std::string_view place = "{}";
    std::string text = NvString(PvGetTexts(), static_cast<std::uint32_t>(inText)).GetTextPtr();
    std::size_t at = 0;
    for (const std::string& part : inParts) {
        at = text.find(place, at);
        if (at == std::string::npos)
            break;
        text.replace(at, place.size(), part);
        at += part.size(); // a file may be named "{}"
    }
    return text;
}
