#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "nvcode2/base/nvbytes.h"

/** Searches one row of a 1-bit mask, the leftmost pixel in the top bit of a byte. 64 pixels that are alike
 * cost one comparison: nearly all masks of real animations are made of long runs. Padding bits of the last
 * byte are ignored. */

/** The 64 bits of a row from byte inByte on, the leftmost in the top bit; what lies behind the row's bytes
 *  reads as 0. */
inline std::uint64_t NvMaskWord(const std::uint8_t* inRow, std::uint32_t inWidth, std::uint32_t inByte) {
    const std::uint32_t bytes = (inWidth + 7) / 8;
    if (inByte + 8 <= bytes)
        return NvLoadBigEndian(inRow + inByte);
    std::uint64_t word = 0;
    for (std::uint32_t i = inByte; i < bytes; ++i)
        word |= std::uint64_t{inRow[i]} << (56 - 8 * (i - inByte));
    return word;
}

/** The first column from inFrom on whose pixel is set, or is not, as inIsSet says; inWidth when there is
 *  none. */
inline std::uint32_t NvFindBit(const std::uint8_t* inRow, std::uint32_t inWidth, std::uint32_t inFrom,
                               bool inIsSet) {
    const std::uint64_t flip = inIsSet ? 0 : ~std::uint64_t{0};
    std::uint64_t before = inFrom % 8 == 0 ? 0 : ~(~std::uint64_t{0} >> inFrom % 8); // columns not asked for
    for (std::uint32_t x = inFrom - inFrom % 8; x < inWidth; x += 64) {
        const std::uint64_t word = (NvMaskWord(inRow, inWidth, x / 8) ^ flip) & ~before;
        if (word != 0)
            return std::min(x + static_cast<std::uint32_t>(std::countl_zero(word)), inWidth);
        before = 0;
    }
    return inWidth;
}

/** Calls inVisit(first, end) for every run of pixels that are set, or are not, as inIsSet says, from left to
 *  right. */
template <typename Visitor>
void NvForEachRun(const std::uint8_t* inRow, std::uint32_t inWidth, bool inIsSet, Visitor inVisit) {
    std::uint32_t end = 0;
    for (;;) {
        const std::uint32_t first = NvFindBit(inRow, inWidth, end, inIsSet);
        if (first == inWidth)
            return;
        end = NvFindBit(inRow, inWidth, first, !inIsSet);
        inVisit(first, end);
    }
}

/** Whether every pixel of the row is set. */
inline bool NvIsRowSet(const std::uint8_t* inRow, std::uint32_t inWidth) {
    return NvFindBit(inRow, inWidth, 0, false) == inWidth;
}
