#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/image/nvcolortable.h"

class NvGIFGlobalInfo;
class PvProgress;
struct PvFrameColours;

/** The steps that give an animation one small palette. They work on the colours its frames draw with. */

/** How strongly BuildGlobalPalette reduces colours. */
enum class PvPaletteMode {
    km_Full,   ///< 256 shared colours, all of which every frame may use
    km_Normal, ///< km_MostColours shared ones, some fewer a frame
    km_Strong, ///< 64 shared colours, 60 a frame
};

/** Entries the shared table may have in a mode. */
std::uint32_t PvPaletteLimit(PvPaletteMode inMode);

/** A palette for all frames. */
struct PvSharedPalette {
    NvColorTable mTable;
    double mWorstError = 0.0; ///< the largest mean error of a frame that it causes, levels per channel
};

/** Whether the shared table of a mode holds all colours of all frames, and no frame draws with more than it
 * may. */
bool PvFitsPalette(const std::vector<PvFrameColours>& inFrames, PvPaletteMode inMode);

/** Builds a palette for all frames' drawn pixels and maps their colours to it.
 *
 *  @throws NvErrorCode  3 when the host asked to stop */
PvSharedPalette BuildGlobalPalette(std::vector<PvFrameColours>& ioFrames, PvPaletteMode inMode,
                                   PvProgress& ioProgress);

/** Takes repeated colours out of the shared table; their pixels go to the first occurrence. */
void MergeDuplicateColours(std::vector<PvFrameColours>& ioFrames, NvColorTable& ioTable);

/** Makes the shared table's entry nearest to a colour the background index, the lowest of equally near ones.
 *  A record without a shared table gets one of two entries of that colour. */
void RestoreBackgroundIndex(NvGIFGlobalInfo& ioInfo, const NvColor& inBackground);
