#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "win/optimizer/base/pvopthost.h"
#include "win/optimizer/base/pvoptsettings.h"
#include "win/optimizer/base/pvoutcome.h"
#include "wnatom/wnscratch.h"
#include "wnatom/wnsystem.h"

class NvAnimation;
class PvProgress;
class PvRebuilder;
struct PvCandidate;
struct PvColourAllowance;
struct PvWritten;

/** Makes one GIF file smaller in place, or leaves it exactly as it is. */
class PvOptimizer {
public:
    /** The host is borrowed for the optimizer's life. */
    explicit PvOptimizer(PvOptHost& inHost, const PvOptSettings& inSettings = {});

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
    std::uint32_t RunBothPasses(const char* inPath, std::uint32_t inOriginalSize);
    std::uint32_t ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar, bool inIsBackedUp,
                                    PvProgress& ioProgress);
    std::optional<PvCandidate> MakeFirstResult(const char* inPath, std::uint32_t inOriginalSize,
                                               PvProgress& ioProgress);
    void SearchTolerance(const char* inPath, PvRebuilder& ioFile, std::uint32_t inOriginalSize,
                         std::optional<PvCandidate>& ioBest, PvProgress& ioProgress);
    std::optional<PvCandidate> WriteRebuilt(const char* inPath, const PvRebuilder& inFile,
                                            std::uint32_t inTolerance,
                                            std::unique_ptr<NvAnimation> inAnimation,
                                            std::uint32_t inSizeToBeat, PvProgress& ioProgress);
    std::optional<PvCandidate> MakeCandidate(const char* inPath, std::uint32_t inSizeToBeat,
                                             const PvWritten& inWritten, PvColourAllowance inAllowance,
                                             PvProgress& ioProgress);
    bool IsTooDamaged() const;
    const char* ScratchPath();
    template <typename Work>
    auto KeepLoadError(const Work& inRead) -> decltype(inRead());
    void KeepReason(const PvCandidate& inCandidate);
    bool Replace(const char* inPath, PvCandidate& ioCandidate, bool inIsBackedUp);

    PvOptHost& mHost;
    PvOptSettings mSettings;
    PvOutcome mOutcome;
    std::optional<WnFileState> mState;     // of the file in hand, when it was loaded or last replaced
    std::optional<WnScratchFile> mScratch; // made for the first measurement, kept for all files
};
