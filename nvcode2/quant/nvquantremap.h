#pragma once

#include <cstdint>

#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/quant/nvquantselector.h"

/** Maps the colours of one table to the nearest entries of another.
 *
 *  @param inTable      the colours to map
 *  @param inHistogram  pixels per entry of inTable; entries without pixels map to 0, which saves the search
 *  @param inTarget     the palette to map to, 1 to 256 entries
 *  @param inFlags      the entries that may be used, at least one; null for all
 *  @return             for every entry of inTable the nearest by squared distance, the lowest of equally near
 *  ones */
NvIndexMap NvMakeRemap(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                       const NvColorTable& inTarget, const NvColorFlags* inFlags);

/** Mean difference per channel, over the pixels counted, between colours and those they are mapped to; 0.0
 *  without pixels. */
double NvMeanRemapError(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                        const NvIndexMap& inMap, const NvColorTable& inTarget);

/** Rewrites an image's pixels through a map and gives it the palette they then refer to. */
void NvQuantRemap(NvIndexedImage& ioImage, const NvIndexMap& inMap, const NvColorTable& inTarget);
