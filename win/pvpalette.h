#pragma once

#include <cstdint>
#include <vector>

#include "nvcode2/nvcolortable.h"
#include "nvcode2/nvquantremap.h"

class NvAnimation;
class PvProgress;
struct PvFrameColours;

/** The steps that give an animation one small palette. The first ones work on the colours that its frames
 * draw with, the later ones on the frames. */

/** How strongly BuildGlobalPalette reduces colours. */
enum class PvPaletteMode {
    km_Full,   ///< 256 shared colours, all of which every frame may use
    km_Normal, ///< 128 shared colours, 120 a frame
    km_Strong, ///< 64 shared colours, 60 a frame
};

/** Entries the shared table may have in a mode. */
std::uint32_t PvPaletteLimit(PvPaletteMode inMode);

/** A palette for all frames. */
struct PvSharedPalette {
    NvColorTable mTable;
    double mWorstError = 0.0; ///< the largest mean error that a frame suffers from it, levels per channel
};

/** Builds a palette for all frames' drawn pixels and maps their colours to it.
 *
 *  @throws NvErrorCode  3 when the progress was told to stop */
PvSharedPalette BuildGlobalPalette(std::vector<PvFrameColours>& ioFrames, PvPaletteMode inMode,
                                   PvProgress& ioProgress);

/** Takes repeated colours out of the shared table; their pixels go to the first occurrence. */
void MergeDuplicateColours(std::vector<PvFrameColours>& ioFrames, NvColorTable& ioTable);

/** Orders the shared table by how many frames draw with a colour, most first, and drops colours that none
 * uses.
 *
 *  A frame's code width follows from its highest index, so small frames that share the common colours get
 * narrow codes. No frame may have a table of its own. Transparency fields are brought up to date.
 *
 *  @param inTableLimit  entries the shared table may have at most
 *  @param inMaps        for each frame the shared entry of each of its indices; empty when those are the same
 */
void OrderSharedTable(NvAnimation& ioAnimation, std::uint32_t inTableLimit,
                      const std::vector<NvIndexMap>& inMaps);

/** Cuts each frame's own colour table behind the highest index in use, the transparent one included, which is
 * what the LZW code width follows from. The shared table stays whole. */
void NarrowTables(NvAnimation& ioAnimation);

/** Makes the shared table's entry nearest to a colour the background index, the lowest of equally near ones.
 * An animation without shared table gets one of two entries of that colour. */
void RestoreBackgroundIndex(NvAnimation& ioAnimation, const NvColor& inBackground);
