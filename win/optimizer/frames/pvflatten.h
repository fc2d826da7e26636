#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/gif/nvgifplayer.h"

class NvGIFFrame;

/** Rewrites the frames of an animation that uses restore-to-previous anywhere so that none does.
 *
 *  Each frame becomes the whole displayed canvas, drawn where it is covered, in a colour table of its own; a
 *  canvas of more colours than a table holds is quantized. What is displayed stays the same once every frame
 *  is cleared that the next one does not cover (see PvIsCoveredBy), and the later steps only meet disposals
 *  that they handle exactly. */
class PvFlattener {
public:
    /** @param inScreenWidth   pixels
     *  @param inScreenHeight  pixels */
    PvFlattener(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight)
        : mPlayer(inScreenWidth, inScreenHeight) {}

    /** Takes the next frame.
     *  @return  the canvas as a frame that stays in place */
    std::unique_ptr<NvGIFFrame> Flatten(const NvGIFFrame& inFrame);

    /** The largest mean error so far of a frame that had to be quantized, levels per channel. */
    double GetError() const { return mWorstError; }

private:
    NvGIFPlayer mPlayer;
    double mWorstError = 0.0;
};

/** Whether everything that one full-screen frame draws is drawn by another one too. */
bool PvIsCoveredBy(const NvGIFFrame& inFrame, const NvGIFFrame& inNext);
