#include "fuzz/checkgif.h"

#include <filesystem>

#include "fuzz/fuzz.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "tests/support/testanimation.h"
#include "tests/support/testfolder.h"
#include "tests/support/testgif.h"
#include "win/optimizer/pvopt.h"

namespace {

constexpr std::uint64_t km_MaxPixels = 1 << 16; // of all frames and of all screens; more only costs time
constexpr std::uint64_t km_MemoryLimit = 64ULL << 20; // bytes
constexpr double km_MaxMean = 64.0;                   // levels per channel: beyond, it is another picture

bool IsSmall(const TestGIF& inGIF) {
    std::uint64_t pixels = 0;
    for (const TestFrame& frame : inGIF.mFrames)
        pixels += std::uint64_t{frame.mWidth} * frame.mHeight + std::uint64_t{inGIF.mWidth} * inGIF.mHeight;
    return pixels <= km_MaxPixels;
}

/** Whether browsers would let the first frame enlarge the screen. */
bool BeginsBeyondScreen(const TestGIF& inGIF) {
    const TestFrame& first = inGIF.mFrames[0];
    return first.mLeft + first.mWidth > inGIF.mWidth || first.mTop + first.mHeight > inGIF.mHeight;
}

/** @return whether every frame could be read */
bool CheckReading(const std::string& inPath, const std::optional<TestGIF>& inExpected) {
    try {
        NvGIFFrameReader reader(inPath.c_str(), km_MemoryLimit);
        Require(inExpected.has_value(), "what the library opens the plain reader reads");
        if (!IsSmall(*inExpected))
            return true;
        Require(!BeginsBeyondScreen(*inExpected), "no first frame beyond the screen");
        const std::vector<TestCanvas> shown = Play(*inExpected);
        Require(reader.GetFrameCount() == shown.size(), "as many frames");
        NvGIFPlayer player(inExpected->mWidth, inExpected->mHeight);
        for (std::uint32_t i = 0; i < shown.size(); ++i) {
            reader.PlayFrame(i, player);
            Require(CanvasOf(player) == shown[i], "the library shows what the plain player shows");
        }
        return true;
    } catch (const NvErrorCode& error) {
        const std::uint32_t code = error.GetCode();
        Require(code == NvErrorCode::km_EndOfFile || code == NvErrorCode::km_MalformedGIF ||
                    code == NvErrorCode::km_NotGIF || code == NvErrorCode::km_UnknownGIFVersion ||
                    code == NvErrorCode::km_OutOfMemory,
                "an error that bytes can cause");
        return false;
    }
}

void CheckResult(const std::string& inPath, const std::optional<TestGIF>& inOriginal,
                 const PvOptSettings& inSettings, const PvOutcome& inOutcome) {
    const std::optional<TestGIF> result = PlainReadGIF(ReadTestFile(inPath));
    const std::optional<TestGIF> again = TryReadGIF(inPath);
    Require(inOriginal && result && again, "the result is read by every reader");
    if (!IsSmall(*inOriginal))
        return;
    const TestComparison readers = CompareGIFs(*result, *again);
    Require(readers.mDifference.empty() && readers.mDiffering == 0, "readers agree on the result");
    bool isDamaged = false;
    for (const TestFrame& frame : inOriginal->mFrames)
        if (frame.mLeft < inOriginal->mWidth && frame.mTop < inOriginal->mHeight)
            isDamaged = isDamaged || frame.mIsDamaged || frame.mDelivered;
    Require(isDamaged == (inOutcome.mDamage.mFrame != 0), "damage is reported");
    Require(!isDamaged || inSettings.mKeepsOriginal, "what is damaged is kept");
    for (const TestFrame& frame : result->mFrames)
        Require(!frame.mIsDamaged && !frame.mDelivered, "the result is sound");
    const TestComparison comparison = CompareGIFs(*inOriginal, *result);
    Require(comparison.mDifference.empty(), comparison.mDifference.c_str());
    Require(comparison.mDiffering == 0 || !inSettings.mIsLossless, "lossless is exact");
    Require(comparison.mWorstMean < km_MaxMean, "the same picture");
}

} // namespace

void CheckGIF(const std::string& inBytes, unsigned inOptions) {
    static const TestFolder folder;
    const std::string path = WriteTestFile(folder / "fuzz.gif", inBytes);
    const std::optional<TestGIF> original = PlainReadGIF(inBytes);
    const bool isReadable = CheckReading(path, original);
    if (original && !IsSmall(*original))
        return;

    PvOptSettings settings;
    settings.mIsLossless = inOptions & 1;
    settings.mCropsSingleImages = inOptions & 2;
    settings.mKeepsOriginal = inOptions & 4;
    settings.mTolerance = (inOptions >> 3 & 3) * 28 / 3;
    settings.mMemoryLimit = km_MemoryLimit;
    TestHost host;
    PvOptimizer optimizer(host, settings);
    std::uint32_t size = 0;
    try {
        size = optimizer.OptimizeGIFFile(path.c_str(), static_cast<std::uint32_t>(inBytes.size()));
    } catch (const NvErrorCode& error) {
        Require(error.GetCode() == NvErrorCode::km_OutOfMemory, "only memory fails");
        size = static_cast<std::uint32_t>(inBytes.size());
    }
    Require(size == std::filesystem::file_size(path), "the size is that of the file");
    if (ReadTestFile(path) == inBytes)
        return;
    Require(isReadable && size < inBytes.size(), "only a smaller file replaces one that can be read");
    Require(!host.mBackups.empty() && host.mBackups[0] == inBytes, "the original was handed over before");
    CheckResult(path, original, settings, optimizer.GetOutcome());
}
