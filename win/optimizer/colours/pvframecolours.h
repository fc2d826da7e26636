#pragma once

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvquantremap.h"

/** Drawn pixels per entry of a frame's colour table. */
using PvHistogram = NvHistogram;

/** The same once indices are mapped. */
PvHistogram PvMapHistogram(const PvHistogram& inHistogram, const NvIndexMap& inMap);

/** What a frame draws with, while colours are being reduced. Its pixels need not be in memory: they are
 * mapped once, when the fate of every colour is settled. */
struct PvFrameColours {
    /** The colours of a frame as it was read. */
    explicit PvFrameColours(const NvGIFFrame& inFrame);

    /** Replaces the present colours by others.
     *  @param inMap    the entry of inTable for every entry of mTable that is drawn with
     *  @return         the mean error that this causes, levels per channel over the drawn pixels */
    double Replace(const NvIndexMap& inMap, const NvColorTable& inTable);

    NvColorTable mTable;      ///< the present colours
    PvHistogram mHistogram{}; ///< drawn pixels of each
    NvIndexMap mMap;          ///< the present entry for every index of the frame as it was read
};
