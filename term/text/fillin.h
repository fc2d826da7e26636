#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/** A text in which each # stands for the next of the numbers, put together by the compiler: so a table of
 * texts names the limits that the code has, and no others. */
template <std::uint32_t... Numbers, std::size_t Size>
consteval auto TermFillIn(const char (&inText)[Size]) {
    constexpr std::array numbers{Numbers...};
    std::array<char, Size + 10 * numbers.size()> text{}; // what is left over stays NUL
    std::size_t length = 0;
    std::size_t used = 0;
    for (const char letter : inText) {
        if (letter != '#') {
            text.at(length++) = letter;
            continue;
        }
        std::uint32_t divisor = 1;
        while (numbers.at(used) / divisor >= 10)
            divisor *= 10;
        for (; divisor > 0; divisor /= 10)
            text.at(length++) = static_cast<char>('0' + numbers.at(used) / divisor % 10);
        ++used;
    }
    return text;
}
