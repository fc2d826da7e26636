#pragma once

#include <cstdint>

#include "nvcode2/image/nvcolortable.h"

/** An inverse colour map: for every cell of a 32 x 32 x 32 grid over RGB, the index of the nearest palette
 *  entry. Mapping a pixel to the palette then costs one look-up. */

/** Bytes in an inverse colour map. */
constexpr std::uint32_t km_InverseColorMapSize = 32768;

/** The place of a colour's cell in the map: the top five bits of each channel, red most significant. */
constexpr std::uint32_t NvInverseColorMapCell(NvColor inColor) {
    return static_cast<std::uint32_t>((inColor.red >> 3) << 10 | (inColor.green >> 3) << 5 |
                                      inColor.blue >> 3);
}

/** Builds the map of a palette.
 *
 *  A cell stands for the colour whose 5-bit channels are widened to 8: red and green repeat their top
 *  three bits, blue repeats its low three. That rule for blue decides which entry some cells get, so it
 *  must stay. The nearest entry has the least squared RGB distance; among equals the lowest index wins.
 *
 *  @param inTablePtr  at least one entry; of an index above 255 the low eight bits are stored
 *  @param outInvMap   km_InverseColorMapSize bytes
 *  Cost: 2.4 ms for 256 colours. Pruning the search would make it 0.6 ms, with far more code for the one map
 *  that a contact sheet needs. */
void MakeInverseColorMap(const NvColorTable* inTablePtr, std::uint8_t* outInvMap);
