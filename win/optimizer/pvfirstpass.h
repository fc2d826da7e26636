#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvquantremap.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/look/pvgate.h"

class NvAnimation;
class PvFrameStream;
class PvProgress;

/** How a pass may change an animation. */
struct PvPassOptions {
    bool mIsLossless = false;        ///< no displayed colour changes
    bool mCropsSingleImages = false; ///< a still picture may lose its transparent borders
};

/** The part of the first pass that looks at every pixel: one small palette, nothing drawn that the screen
 *  shows already, tight frames.
 *
 *  The file is read twice, frame by frame: first for its colours, of which the palette is chosen, then to see
 *  what each frame adds to the screen. Only the latter is kept. What was chosen serves for any number of
 *  tolerances. */
class PvFirstPass {
public:
    /** Reads the file once.
     *
     *  @param inMemoryLimit  bytes the work on the file may need
     *  @throws NvErrorCode   2 when that is not enough, before any pixels are read; 3 when the progress was
     *  told to stop; otherwise those of NvGIFFrameReader */
    PvFirstPass(const char* inPath, std::uint64_t inMemoryLimit, const PvPassOptions& inOptions,
                PvProgress& ioProgress);

    std::uint32_t GetFrameCount() const { return mReader.GetFrameCount(); }

    /** What the file's background index named. */
    const NvColor& GetBackground() const { return mBackground; }

    /** Reads the file again, and makes its frames as small as they can be.
     *
     *  @param inTolerance   levels per channel, see PvDifferencer; 0 when nothing may be lost
     *  @param outStructure  how close the frames look as PvComparison::mMeanStructure has it; null spares the
     *  time to measure that
     *  @throws NvErrorCode  as the constructor */
    std::unique_ptr<NvAnimation> Rebuild(std::uint32_t inTolerance, PvProgress& ioProgress,
                                         double* outStructure = nullptr);

    /** The tables that its frames get. */
    PvTablePlan PlanTables(const NvAnimation& inAnimation) const;

    /** How far the colours may be from the original's after Rebuild. */
    PvColourAllowance GetAllowance(std::uint32_t inTolerance) const;

private:
    PvFrameStream OpenStream();
    void ChooseColours(PvProgress& ioProgress);

    NvGIFFrameReader mReader;
    PvPassOptions mOptions;
    NvColor mBackground;
    NvColorTable mSharedTable;     // of all frames
    std::vector<NvIndexMap> mMaps; // its entry for every index of each frame
    double mFlattenError = 0.0;    // these two in levels per channel, of the worst frame
    double mColourError = 0.0;
};
