#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "nvcode2/base/nvbytes.h"
#include "nvcode2/image/nvcolortable.h"

/** The pixel pairs that can change places unnoticed: A B A along a row becomes B A A.
 *
 *  LZW then sees longer runs, while the colours of the area stay the same on average. Only pairs away from
 *  edges and of colours not too far apart qualify. Two steps use the same pairs: post-dither, which exchanges
 *  all of them, and the optimizer's search, which tries each. */

/** Strength from which on a neighbourhood counts as an edge; of 0 to 255. */
inline constexpr std::uint32_t km_EdgeThreshold = 180;

/** The gradient at a pixel: per channel the sum of the absolute Sobel sums in both directions, at most 255;
 *  the largest of the three channels.
 *
 *  @param inPixel   the pixel's index, with its eight neighbours around it in memory
 *  @param inStride  bytes from one row to the next
 *  @param inColors  the colour table's entries; every index around the pixel has one */
std::uint32_t EdgeStrength(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors);

/** Whether every channel of the one colour minus the same of the other lies between -128 and 128. */
bool ColoursClose(const NvColor& inColor1, const NvColor& inColor2);

/** In place of a spared index: there is none. */
inline constexpr std::int32_t km_SpareNothing = -1;

/** Whether a pixel and its right neighbour may be exchanged.
 *
 *  @param inPixel        the left pixel of the pair; it has neighbours in every direction and two to its
 *  right
 *  @param inSparedIndex  an index that is never moved, or km_SpareNothing */
bool NvIsSwappablePair(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors,
                       std::int32_t inSparedIndex);

/** The first place of a row from inX on, in steps of two and before inEnd, that shows A B A with something
 *  other than A in front; inEnd or beyond when there is none. Looks at eight pixels at a time, since hardly
 * any place passes.
 *  @param inX    at least 1
 *  @param inEnd  the row has two pixels more at least */
inline std::uint32_t NvFindPattern(const std::uint8_t* inRow, std::uint32_t inX, std::uint32_t inEnd) {
    constexpr std::uint64_t km_EverySecond = 0x0080008000800080U;
    std::uint32_t x = inX;
    for (; x + 8 <= inEnd; x += 8) {
        const std::uint64_t a = NvLoadLittleEndian(inRow + x);
        const std::uint64_t returns = NvFindZeroBytes(a ^ NvLoadLittleEndian(inRow + x + 2));
        if ((returns & km_EverySecond) == 0)
            continue;
        const std::uint64_t isRun = NvFindZeroBytes(a ^ NvLoadLittleEndian(inRow + x + 1)) |
                                    NvFindZeroBytes(a ^ NvLoadLittleEndian(inRow + x - 1));
        if (const std::uint64_t found = returns & ~isRun & km_EverySecond)
            return x + static_cast<std::uint32_t>(std::countr_zero(found)) / 8;
    }
    while (x < inEnd && (inRow[x + 2] != inRow[x] || inRow[x + 1] == inRow[x] || inRow[x - 1] == inRow[x]))
        x += 2;
    return x;
}

/** Calls inVisit(row, column) for every place where a pair may start and the pattern is there, in the order
 *  in which pairs are exchanged: inner rows top to bottom, columns 1, 3, 5 and so on. Frames too small for a
 *  pair have none. What the visitor exchanges is seen by the places after it. */
template <typename Visitor>
void NvForEachPattern(const std::uint8_t* inPixels, std::uint32_t inStride, std::uint32_t inWidth,
                      std::uint32_t inHeight, Visitor inVisit) {
    if (inWidth < 5 || inHeight < 3)
        return;
    const std::uint32_t end = 1 + (inWidth - 3) / 2 * 2;
    for (std::uint32_t y = 1; y + 1 < inHeight; ++y) {
        const std::uint8_t* row = inPixels + std::size_t{y} * inStride;
        for (std::uint32_t x = NvFindPattern(row, 1, end); x < end; x = NvFindPattern(row, x + 2, end))
            inVisit(y, x);
    }
}
