#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/quant/nvquantremap.h"
#include "win/optimizer/colours/pvtableplan.h"
#include "win/optimizer/frames/pvdifference.h"
#include "win/optimizer/look/pvgate.h"

class NvAnimation;
class PvFrameStream;
class PvProgress;
struct PvOptSettings;

/** The part of the first pass that looks at every pixel. It leaves one small palette, nothing drawn that the
 *  screen shows already, and tight frames.
 *
 *  The file is read twice, frame by frame: first for its colours, from which the palette is chosen, then to
 *  see what each frame adds to the screen. Only the result of the latter is kept. The palette serves for any
 *  number of tolerances. */
class PvRebuilder {
public:
    /** Takes the frames rebuilt so far, or all, and how close they look, as PvComparison::mMeanStructure has
     *  it. @return whether to go on */
    using Judge = std::function<bool(const NvAnimation& inFrames, double inStructure)>;

    /** Opens the file.
     *
     *  @param inSettings     borrowed for the rebuilder's life
     *  @throws NvErrorCode   2 when the work needs more memory than allowed; otherwise those of
     *  NvGIFFrameReader */
    PvRebuilder(const char* inPath, const PvOptSettings& inSettings);

    std::uint32_t GetFrameCount() const { return mReader.GetFrameCount(); }

    /** The colour that the file's background index named. */
    const NvColor& GetBackground() const { return mBackground; }

    /** What the first pass costs at least, see PvTooMuchWork. */
    std::uint64_t GetLeastWork() const;

    /** Of the frames read so far, see NvGIFFrameReader. */
    const NvGIFDamage& GetDamage() const { return mReader.GetDamage(); }

    /** Reads the file, the first time for its palette too, and makes its frames as small as they can be.
     *
     *  @param inTolerance   levels per channel, see PvDifferencer; 0 when nothing may be lost
     *  @param inJudge       asked on the way and at the end; null saves the time of measuring looks
     *  @return              the animation; its first frames when they were judged enough
     *  @throws NvErrorCode  3 when the host asked to stop; otherwise those of NvGIFFrameReader
     *  @throws PvSprawlingFrames  as PvFrameStream */
    std::unique_ptr<NvAnimation> Rebuild(std::uint32_t inTolerance, PvProgress& ioProgress,
                                         const Judge& inJudge = nullptr);

    /** The tables that its frames get. */
    PvTablePlan PlanTables(const NvAnimation& inAnimation) const;

    /** How far the colours may be from the original's after Rebuild. */
    PvColourAllowance GetAllowance(std::uint32_t inTolerance) const;

private:
    void CheckMemory(std::uint64_t inFrames) const;
    PvFrameStream OpenStream();
    void ChooseColours(PvProgress& ioProgress);
    std::unique_ptr<NvAnimation> MakeEmptyAnimation() const;
    std::optional<PvDifferencer> MakeDifferencer(std::uint32_t inTolerance) const;
    void ShowSharedColours(NvGIFFrame& ioFrame, std::uint32_t inIndex) const;
    void MapToSharedTable(NvGIFFrame& ioFrame, std::uint32_t inIndex) const;

    NvGIFFrameReader mReader;
    const PvOptSettings& mSettings;
    NvColor mBackground;
    NvColorTable mSharedTable;     // of all frames; empty when nothing may be lost
    std::vector<NvIndexMap> mMaps; // for each frame, the shared entry that each of its indices becomes
    PvColourErrors mColourErrors;  // of the palette, and of frames made for it
};
