#pragma once

#include <algorithm>
#include <cstdint>

/** Loops over one row of a 1-bit mask, the leftmost pixel in the top bit of a byte. Bytes that are all set or
 * all clear cost one comparison, since nearly all masks of real animations are made of them. Padding bits of
 * the last byte are ignored. */

/** The bits of the last byte of a row that stand for pixels, when the row's width is no multiple of 8. */
constexpr unsigned NvMaskTail(std::uint32_t inPixels) {
    return inPixels >= 8 ? 0xFFU : 0xFFU & (0xFF00U >> inPixels);
}

/** Calls inVisit(x) for every pixel of the row whose bit is clear, left to right. */
template <typename Visitor>
void NvForEachClearBit(const std::uint8_t* inRow, std::uint32_t inWidth, Visitor inVisit) {
    for (std::uint32_t x = 0; x < inWidth; x += 8) {
        const unsigned clear = ~static_cast<unsigned>(inRow[x / 8]) & NvMaskTail(inWidth - x);
        for (unsigned bits = clear, i = 0; bits != 0; ++i, bits = (bits << 1) & 0xFFU)
            if (bits & 0x80U)
                inVisit(x + i);
    }
}

/** Whether every pixel of the row is set. */
inline bool NvIsRowSet(const std::uint8_t* inRow, std::uint32_t inWidth) {
    for (std::uint32_t x = 0; x < inWidth; x += 8)
        if (~static_cast<unsigned>(inRow[x / 8]) & NvMaskTail(inWidth - x))
            return false;
    return true;
}
