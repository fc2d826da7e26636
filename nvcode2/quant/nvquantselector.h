#pragma once

#include <array>
#include <cstdint>

#include "nvcode2/image/nvcolortable.h"

/** One flag per entry of a shared palette: whether a frame may use it. */
using NvColorFlags = std::array<bool, 256>;

/** Picks, for one image, the entries of a shared palette that it needs most.
 *
 *  First go the entries that are nearest to none of the image's colours; then, while too many are left, the
 *  one whose removal adds the least error: the pixels it stands for times the squared distance to the nearest
 *  entry kept.
 *
 *  @param inTable      the image's own colours
 *  @param inHistogram  drawn pixels per entry of inTable
 *  @param inShared     the shared palette, 1 to 256 entries
 *  @param inMaxColors  entries that may be picked, at least 1
 *  @return             the flags, at least one of them set */
NvColorFlags NvQuantSelector(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                             const NvColorTable& inShared, std::uint32_t inMaxColors);
