#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/base/nvgeometry.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/base/pvcolourerrors.h"

class NvGIFFrame;
class NvGIFFrameInfo;

/** Rewrites the frames of an animation that restores what a frame covered so that none of them does.
 *
 *  Each frame becomes the smallest rectangle of the displayed canvas that holds all that changes, drawn where
 *  it changes, in a colour table of its own; more colours than a table holds are quantized. A frame stays in
 *  place when the next canvas covers all that this one covers; otherwise it is cleared, its rectangle large
 *  enough to hold what vanishes. The later steps then meet only disposals that they handle exactly, and a
 *  frame costs what it and the disposal before it touch, not the whole canvas. */
class PvFlattener {
public:
    using Pixel = NvGIFPlayer::Pixel;

    /** @param inScreenWidth   pixels
     *  @param inScreenHeight  pixels */
    PvFlattener(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight);

    /** Takes the next frame.
     *  @return  the one before it, rewritten; null when this is the first */
    std::unique_ptr<NvGIFFrame> Flatten(const NvGIFFrame& inFrame);

    /** @return  the last frame, rewritten */
    std::unique_ptr<NvGIFFrame> Finish();

    /** What quantizing made of colours so far. */
    const PvColourErrors& GetErrors() const { return mErrors; }

private:
    using Columns = NvGIFPlayer::Columns;

    template <typename Visitor>
    void ForEachTouchedRow(const NvRect& inCleared, Visitor inVisit);
    NvRect FindVanished();
    void FindChanges(const NvRect& inCleared);
    void Clear(const NvRect& inRect);
    std::unique_ptr<NvGIFFrame> MakeFrame(const NvRect& inVanished);
    const Pixel* ReadNow(std::uint32_t inY, const Columns& inColumns);
    Pixel* ShownRow(std::uint32_t inY) { return mShown.data() + std::size_t{mPlayer.GetScreenWidth()} * inY; }

    NvGIFPlayer mPlayer;
    std::vector<Pixel> mShown; // what the frames made so far display, row-major
    std::vector<Pixel> mNow;   // of the row in hand, what is to be displayed
    PvColourErrors mErrors;

    // The frame that was taken last.
    std::unique_ptr<NvGIFFrameInfo> mInfo; // null before the first
    NvRect mRect{};                        // of all that it changes
    std::vector<std::uint8_t> mIsDrawn;    // 1 or 0 per pixel of the rectangle, row-major
};
