#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "nvcode2/nverrorcode.h"
#include "win/pvswap.h"
#include "wnatom/wnscratch.h"

class NvAnimation;
class PvProgress;
class WnPref;
struct PvColourAllowance;

/** What the optimizer asks of the program around it. */
class PvOptHost {
public:
    virtual ~PvOptHost() = default;

    /** Called at most once per file, immediately before the original is first replaced.
     *  An NvErrorCode raised here leaves the original untouched. */
    virtual void BackupFile(const char* inPath) = 0;

    /** Called between frames and steps with how far this file is, from 0.0 to 1.0.
     *  @return true to abandon the file; it stays as it was and code 3 is raised. */
    virtual bool ReportProgress(double inFraction) = 0;
};

/** What a run may use and do. */
struct PvOptSettings {
    std::uint64_t mMemoryLimit = 0; ///< bytes one file may need; 0: half the physical memory, at least 1 GiB
};

/** What became of one file, beyond its size. */
struct PvOutcome {
    std::optional<NvErrorCode> mLoadError; ///< why the file could not be read as a GIF; it was left alone
    std::string
        mGateReason; ///< what a viewer would have noticed in the rejected result; empty: nothing rejected
    std::uint32_t mFrameCount = 0;
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
     * and the file errors of writing the result; the original is whole in every case */
    std::uint32_t OptimizeGIFFile(const char* inPath, std::uint32_t inOriginalSize);

    /** About the file of the last OptimizeGIFFile call. */
    const PvOutcome& GetOutcome() const { return mOutcome; }

private:
    std::uint32_t RunBothPasses(const char* inPath, std::uint32_t inOriginalSize);
    std::uint32_t ReoptimizeGIFFile(const char* inPath, std::uint32_t inSizeSoFar, bool inIsBackedUp);
    std::unique_ptr<NvAnimation> Load(const char* inPath, PvProgress& ioProgress,
                                      struct NvColor& outBackground);
    PvColourAllowance RebuildColours(NvAnimation& ioAnimation, PvProgress& ioProgress);
    void FinishPass(NvAnimation& ioAnimation, const struct NvColor& inBackground,
                    PvColourAllowance& ioAllowance, PvProgress& ioProgress);
    void Crop(NvAnimation& ioAnimation) const;
    std::uint32_t Measure(NvAnimation& ioAnimation);
    bool Replace(const char* inPath, NvAnimation& ioAnimation, const PvColourAllowance& inAllowance,
                 bool inIsBackedUp);

    const WnPref& mPrefs;
    PvOptHost& mHost;
    PvOptSettings mSettings;
    PvOutcome mOutcome;
    std::optional<WnScratchFile> mScratch; // made for the first measurement, kept for all files
    PvPixelSwapper mSwapper;
};
