#include "term/text/numbers.h"

#include <algorithm>

std::string TermGrouped(std::uint64_t inNumber) {
    return TermGroupedText(std::to_string(inNumber));
}

std::string TermGroupedText(std::string_view inText) {
    constexpr std::string_view digits = "0123456789";
    std::string text;
    while (!inText.empty()) {
        const std::size_t begin = std::min(inText.find_first_of(digits), inText.size());
        const std::size_t end = std::min(inText.find_first_not_of(digits, begin), inText.size());
        text += inText.substr(0, begin);
        for (std::size_t i = begin; i < end; ++i) {
            if (i != begin && (end - i) % 3 == 0)
                text += ',';
            text += inText[i];
        }
        inText.remove_prefix(end);
    }
    return text;
}
