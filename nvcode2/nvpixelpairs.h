#pragma once

#include <cstdint>

#include "nvcode2/nvcolortable.h"

/** The pixel pairs that may change places without being noticed: A B A along a row becomes B A A.
 *
 *  LZW then sees longer runs, while the colours of the area stay the same on average. Only pairs away from
 * edges and of colours not too far apart qualify. Two steps use the same pairs: post-dither, which exchanges
 * them all, and the optimizer's search, which tries each. */

/** Strength from which on a neighbourhood counts as an edge; of 0 to 255. */
inline constexpr std::uint32_t km_EdgeThreshold = 180;

/** The gradient at a pixel: per channel the sum of the absolute Sobel sums in both directions, at most 255;
 * the largest of the three channels.
 *
 *  @param inPixel   the pixel's index, with its eight neighbours around it in memory
 *  @param inStride  bytes from one row to the next
 *  @param inColors  the colour table's entries; every index around the pixel has one */
std::uint32_t EdgeStrength(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors);

/** Whether every channel of the one colour minus the same of the other lies between -128 and 128. */
bool ColoursClose(const NvColor& inColor1, const NvColor& inColor2);

/** Stands for "no index is spared". */
inline constexpr std::int32_t km_SpareNothing = -1;

/** Whether a pixel and its right neighbour may be exchanged.
 *
 *  @param inPixel        the left pixel of the pair; it has neighbours in every direction and two to its
 * right
 *  @param inSparedIndex  an index that is never moved, or km_SpareNothing */
bool NvIsSwappablePair(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors,
                       std::int32_t inSparedIndex);

/** Calls inVisit(row, column) for every place where a pair may start, in the order in which pairs are
 * exchanged: inner rows top to bottom, columns 1, 3, 5 and so on. Frames too small for a pair have none. */
template <typename Visitor>
void NvForEachPairPosition(std::uint32_t inWidth, std::uint32_t inHeight, Visitor inVisit) {
    if (inWidth < 5 || inHeight < 3)
        return;
    const std::uint32_t positions = (inWidth - 3) / 2;
    for (std::uint32_t y = 1; y + 1 < inHeight; ++y)
        for (std::uint32_t i = 0; i < positions; ++i)
            inVisit(y, 1 + 2 * i);
}
