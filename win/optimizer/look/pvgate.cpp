#include "win/optimizer/look/pvgate.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/base/pvprogress.h"
#include "win/optimizer/look/pvlookseries.h"
#include "win/texts/pvtexts.h"
#include "wnatom/wnsystem.h"

namespace {

/** Without the empty ones, which are never written. */
std::vector<std::string> CommentsOf(const NvGIFGlobalInfo& inInfo) {
    std::vector<std::string> comments = inInfo.mComments.GetTexts();
    std::erase(comments, std::string());
    return comments;
}

/** What differs in a file's global record; empty when nothing does. */
std::string CompareFiles(const NvGIFFrameReader& inOriginal, const NvGIFFrameReader& inCandidate) {
    const NvGIFGlobalInfo& original = *inOriginal.ShareGlobalInfo();
    const NvGIFGlobalInfo& candidate = *inCandidate.ShareGlobalInfo();
    if (inOriginal.GetScreenWidth() != inCandidate.GetScreenWidth() ||
        inOriginal.GetScreenHeight() != inCandidate.GetScreenHeight())
        return PvSay(PvText::km_OtherScreen);
    if (inOriginal.GetFrameCount() != inCandidate.GetFrameCount())
        return PvSay(PvText::km_OtherFrameCount);
    if (original.mHasLoop != candidate.mHasLoop || original.mLoopCount != candidate.mLoopCount)
        return PvSay(PvText::km_OtherLooping);
    if (original.mAspect != candidate.mAspect)
        return PvSay(PvText::km_OtherAspect);
    if (CommentsOf(original) != CommentsOf(candidate))
        return PvSay(PvText::km_OtherComments);
    return {};
}

// Frozen, torn motion measures below this. Limits of 0.87 and 0.93 made real files 3 % larger at equal look.
constexpr double km_LeastStructure = 0.80;

// Trying smaller tolerances above this, too, took 2.6 times as long and changed 5 of 119 real files, by a few
// hundred bytes in all.
constexpr double km_GoodStructure = 0.97;

std::string InFrame(std::uint32_t inIndex, PvText inWhat) {
    return PvSay(inWhat, {std::to_string(inIndex + 1)});
}

/** Plays both files up to the first difference that must not be, and measures looks on the way.
 *  @return  that difference; empty when there is none */
std::string PlayBoth(NvGIFFrameReader& ioOriginal, NvGIFFrameReader& ioCandidate,
                     const PvColourAllowance& inAllowance, PvComparison& ioComparison,
                     PvProgress& ioProgress) {
    const std::uint32_t width = ioOriginal.GetScreenWidth();
    const std::uint32_t height = ioOriginal.GetScreenHeight();
    const std::uint32_t count = ioOriginal.GetFrameCount();
    NvGIFPlayer originalPlayer(width, height);
    NvGIFPlayer candidatePlayer(width, height);
    PvCanvasComparison comparison(width, height, inAllowance);
    PvLookSeries looks(width, height, count);
    bool restores = false; // what the candidate's last frame covered
    for (std::uint32_t i = 0; i < count; ++i) {
        ioProgress.ReportFrame(i, count);
        const NvGIFFrameInfo& original = ioOriginal.PlayFrame(i, originalPlayer);
        const NvGIFFrameInfo& candidate = ioCandidate.PlayFrame(i, candidatePlayer);
        if (original.mDelay != candidate.mDelay)
            return InFrame(i, PvText::km_OtherDelay);
        if (original.mUserInput != candidate.mUserInput)
            return InFrame(i, PvText::km_OtherUserInput);
        comparison.BeginFrame(i, std::exchange(restores, candidate.RestoresPrevious()) || restores);
        const auto compare = [&](std::uint32_t inY, const NvGIFPlayer::Columns& inColumns) {
            comparison.Update(originalPlayer, candidatePlayer, inY, inColumns);
        };
        // The last frame is compared in full: an area wrongly taken for unchanged is found there.
        if (i + 1 < count)
            PvForEachChangedRow(originalPlayer, candidatePlayer, compare);
        else
            for (std::uint32_t y = 0; y < height; ++y)
                compare(y, {0, width});
        if (!comparison.SamePixelsCovered())
            return InFrame(i, PvText::km_OtherPixels);
        if (!comparison.ColoursAreExplained())
            return InFrame(i, PvText::km_OtherColours);
        if (looks.ShowFrame(originalPlayer, candidatePlayer)) {
            ioComparison.mWorstLook = looks.GetWorst();
            comparison.MeasureErrors(ioComparison.mWorstLook);
        }
    }
    ioComparison.mMeanStructure = looks.GetMeanStructure();
    return {};
}

} // namespace

double PvComparison::GetStructure() const {
    return PvStructureOf(mWorstLook);
}

bool PvComparison::HasLostStructure() const {
    return GetStructure() < km_LeastStructure;
}

bool PvComparison::MayLookBetter() const {
    return GetStructure() < km_GoodStructure || mWorstLook.mSsim < km_LeastStructure;
}

PvComparison PvCompareGIFs(const char* inOriginalPath, const char* inCandidatePath,
                           const PvColourAllowance& inAllowance, PvProgress& ioProgress) {
    PvComparison comparison;
    NvGIFFrameReader original(inOriginalPath, WnGetUsualMemoryLimit());
    try {
        NvGIFFrameReader candidate(inCandidatePath, WnGetUsualMemoryLimit());
        ioProgress.SpendWork(2 * (PvWorkOfReading(original) + PvWorkOfReading(candidate))); // and comparing
        comparison.mReason = CompareFiles(original, candidate);
        if (comparison.mReason.empty())
            comparison.mReason = PlayBoth(original, candidate, inAllowance, comparison, ioProgress);
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_OutOfMemory || error.GetCode() == NvErrorCode::km_Cancelled)
            throw;
        comparison.mReason = PvSay(PvText::km_NotReadable);
    }
    return comparison;
}
