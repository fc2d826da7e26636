#pragma once

#include "nvcode2/image/nvcolortable.h"
#include "win/optimizer/colours/pvhistogram.h"

class NvGIFFrame;

/** What a frame draws with, while colours are being reduced. Its pixels need not be at hand: they are mapped
 *  once, when it is settled what becomes of every colour. */
struct PvFrameColours {
    /** The colours of a frame as it was read. */
    explicit PvFrameColours(const NvGIFFrame& inFrame);

    /** Puts other colours in the place of the present ones.
     *  @param inMap    the entry of inTable for every entry of mTable that is drawn with
     *  @return         the mean error that this makes, levels per channel over the drawn pixels */
    double Replace(const NvIndexMap& inMap, const NvColorTable& inTable);

    NvColorTable mTable;      ///< the present colours
    PvHistogram mHistogram{}; ///< drawn pixels of each
    NvIndexMap mMap;          ///< the present entry for every index of the frame as it was read
};
