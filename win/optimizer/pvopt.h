#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "nvcode2/base/nverrorcode.h"
#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/frames/pvdifference.h"
#include "win/optimizer/look/pvlook.h"
#include "win/optimizer/pvpasses.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

class NvAnimation;
class PvProgress;
class WnPref;

/** What a run may use and do, beside the preferences ALLOWCROP (cuts transparent borders off single images)
 *  and LOSSLESS (changes no displayed colour: no palette building, no tolerance, no exchanged pixels). */
struct PvOptSettings {
    /** Largest difference per channel at which a frame's pixel counts as what the screen shows already, 0
     *  to 28. */
    std::uint32_t mTolerance = km_DifferenceTolerance;
    std::uint64_t mMemoryLimit = 0; ///< bytes one file may need; 0: half the physical memory, at least 1 GiB
};

/** What became of one file, beyond its size. */
struct PvOutcome {
    std::optional<NvErrorCode> mLoadError; ///< why the file could not be read as a GIF; it was left alone
    std::string mGateReason; ///< why a smaller result was not kept: what a viewer would have noticed, or that
                             ///< the file was changed by others meanwhile; empty: nothing was rejected
    std::uint32_t mFrameCount = 0;
    PvFrameLook mWorstLook; ///< of the displayed frame that changed most, when the file was made smaller
};

/** Makes one GIF file smaller in place, or leaves it exactly as it is. */
class PvOptimizer {
public:
    /** All three are borrowed for the optimizer's life. */
    PvOptimizer(const WnPref& inPrefs, PvOptHost& inHost, const PvOptSettings& inSettings = {});

    PvOptimizer(const PvOptimizer&) = delete;
    PvOptimizer& operator=(const PvOptimizer&) = delete;

    /** Runs both passes over one file.
     *
     *  @param inPath          the GIF file, NUL-terminated
     *  @param inOriginalSize  its size in bytes
     *  @return                the size the file has afterwards: inOriginalSize when it could not be loaded
     *                         (see GetOutcome) or nothing smaller was found
     *  @throws NvErrorCode    2 when the file needs more memory than allowed, 3 when the host asked to stop,
     *  and the file errors of writing the result; the original is whole in every case */
    std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize);

    /** About the file of the last OptimizeGIFFile call. */
    const PvOutcome& GetOutcome() const { return mOutcome; }

private:
    struct Candidate;

    std::uint32_t RunBothPasses(const char* inPath, std::uint32_t inOriginalSize);
    std::uint32_t ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar, bool inIsBackedUp,
                                    PvProgress& ioProgress);
    std::optional<Candidate> ChooseFirstPass(const char* inPath, std::uint32_t inOriginalSize,
                                             PvProgress& ioProgress);
    void ReduceTolerance(const char* inPath, PvFirstPass& ioFile, std::uint32_t inTolerance,
                         std::uint32_t inOriginalSize, std::optional<Candidate>& ioBest,
                         PvProgress& ioProgress);
    std::optional<Candidate> FinishFirstPass(const char* inPath, const PvFirstPass& inFile,
                                             std::uint32_t inTolerance,
                                             std::unique_ptr<NvAnimation> inAnimation,
                                             std::uint32_t inSizeToBeat, PvProgress& ioProgress);
    std::optional<Candidate> MakeCandidate(const char* inPath, std::uint32_t inSizeToBeat,
                                           const PvWritten& inWritten, PvColourAllowance inAllowance);
    const char* ScratchPath();
    template <typename Work>
    auto KeepLoadError(const Work& inRead) -> decltype(inRead());
    PvPassOptions PassOptions() const;
    bool IsPreferred(const char* inName) const;
    bool Replace(const char* inPath, Candidate& ioCandidate, bool inIsBackedUp);

    const WnPref& mPrefs;
    PvOptHost& mHost;
    PvOptSettings mSettings;
    PvOutcome mOutcome;
    std::optional<WnFileState> mState;     // of the file in hand, when it was loaded or last replaced
    std::optional<WnScratchFile> mScratch; // made for the first measurement, kept for all files
};
