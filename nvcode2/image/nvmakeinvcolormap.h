#pragma once

#include <cstdint>

#include "nvcode2/image/nvcolortable.h"

/** An inverse colour map: for every cell of a 32 x 32 x 32 grid over RGB the index of the nearest palette
 *  entry, so that mapping a pixel to the palette costs one look-up. */

/** Bytes in an inverse colour map. */
constexpr std::uint32_t km_InverseColorMapSize = 32768;

/** Where a colour's cell is in the map: the top five bits of each channel, red most significant. */
constexpr std::uint32_t NvInverseColorMapCell(NvColor inColor) {
    return static_cast<std::uint32_t>((inColor.red >> 3) << 10 | (inColor.green >> 3) << 5 |
                                      inColor.blue >> 3);
}

/** Builds the map of a palette.
 *
 *  A cell stands for the colour whose 5-bit channels are widened to 8: red and green repeat their top
 *  three bits, blue repeats its low three. The blue rule decides which entry some cells get, so it stays
 *  as it is. The nearest entry has the least squared RGB distance; among equals the lowest index wins.
 *
 *  @param inTablePtr  at least one entry; of an index above 255 the low eight bits are stored
 *  @param outInvMap   km_InverseColorMapSize bytes of the caller's
 *  Raises 2 when memory is out. Cost: 256 colours take less than a tenth of a plain search's time even when
 *  they are all greys, a thirtieth when they are scattered (bench/inversemap_bench). */
void MakeInverseColorMap(const NvColorTable* inTablePtr, std::uint8_t* outInvMap);
