#include "term/text/utf8.h"

#include <cstdint>

std::size_t TermUtf8Length(std::string_view inText) {
    const auto byteAt = [&](std::size_t inAt) { return static_cast<unsigned char>(inText[inAt]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || length > inText.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80)
            return 0;
    }
    const unsigned char second = byteAt(1);
    const bool isOverlong = (first == 0xe0 && second < 0xa0) || (first == 0xf0 && second < 0x90);
    const bool isSurrogate = first == 0xed && second >= 0xa0;
    const bool isTooHigh = first == 0xf4 && second >= 0x90;
    return isOverlong || isSurrogate || isTooHigh ? 0 : length;
}

bool TermIsUtf8(std::string_view inText) {
    while (!inText.empty()) {
        const std::size_t length = TermUtf8Length(inText);
        if (length == 0)
            return false;
        inText.remove_prefix(length);
    }
    return true;
}

std::string TermBase64(std::string_view inBytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((inBytes.size() + 2) / 3 * 4);
    for (; !inBytes.empty(); inBytes.remove_prefix(inBytes.size() < 3 ? inBytes.size() : 3)) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < inBytes.size() ? static_cast<unsigned char>(inBytes[i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= inBytes.size() ? alphabet[group >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}
