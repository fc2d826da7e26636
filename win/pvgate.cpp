#include "win/pvgate.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "nvcode2/nverrorcode.h"
#include "nvcode2/nvgifplayer.h"
#include "win/pvload.h"

namespace {

std::vector<std::string> CommentsOf(const NvGIFGlobalInfo& inInfo) {
    std::vector<std::string> comments;
    for (const NvList::Node* node = inInfo.mComments.GetFirst(); node; node = node->GetNext()) {
        const std::string& text = static_cast<const NvGIFComment*>(node->GetElement())->mText;
        if (!text.empty())
            comments.push_back(text);
    }
    return comments;
}

/** What differs in all that is said once per file; empty when nothing does. */
std::string CompareFiles(const PvFrameReader& inOriginal, const PvFrameReader& inCandidate) {
    const NvGIFGlobalInfo& original = *inOriginal.ShareGlobalInfo();
    const NvGIFGlobalInfo& candidate = *inCandidate.ShareGlobalInfo();
    if (inOriginal.GetScreenWidth() != inCandidate.GetScreenWidth() ||
        inOriginal.GetScreenHeight() != inCandidate.GetScreenHeight())
        return "the screen size would change";
    if (inOriginal.GetFrameCount() != inCandidate.GetFrameCount())
        return "the number of frames would change";
    if (original.mHasLoop != candidate.mHasLoop || original.mLoopCount != candidate.mLoopCount)
        return "the looping would change";
    if (original.mAspect != candidate.mAspect)
        return "the pixel aspect ratio would change";
    if (CommentsOf(original) != CommentsOf(candidate))
        return "the comments would change";
    return {};
}

/** A stretch of rows, the bottom one excluded. */
struct Rows {
    std::uint32_t mTop = 0;
    std::uint32_t mBottom = 0;

    void Add(const Rows& inRows) {
        const bool wasEmpty = mTop >= mBottom;
        mTop = wasEmpty ? inRows.mTop : std::min(mTop, inRows.mTop);
        mBottom = wasEmpty ? inRows.mBottom : std::max(mBottom, inRows.mBottom);
    }
};

/** Those that the last frame may have changed on either canvas. */
Rows ChangedRows(const NvGIFPlayer& inOriginal, const NvGIFPlayer& inCandidate) {
    const NvRect changed = NvUnionRect(inOriginal.GetChangedRect(), inCandidate.GetChangedRect());
    return {static_cast<std::uint32_t>(changed.top), static_cast<std::uint32_t>(changed.bottom)};
}

/** Compares two canvases row by row and keeps each row's result until the row changes again. */
class CanvasComparison {
public:
    explicit CanvasComparison(std::uint32_t inHeight) : mRows(inHeight) {}

    /** Compares some rows again, those that changed. */
    void Update(const NvGIFPlayer& inOriginal, const NvGIFPlayer& inCandidate, const Rows& inRows) {
        for (std::uint32_t y = inRows.mTop; y < inRows.mBottom; ++y)
            SetRow(y, CompareRow(inOriginal.Row(y), inCandidate.Row(y), inOriginal.GetScreenWidth()));
    }

    bool SamePixelsCovered() const { return mMismatchedRows == 0; }
    std::uint64_t CoveredPixels() const { return mCovered; }

    /** Levels per channel over the covered pixels. */
    double MeanError() const {
        return mCovered == 0 ? 0.0 : static_cast<double>(mError) / (3.0 * static_cast<double>(mCovered));
    }

private:
    struct RowResult {
        std::uint64_t mError = 0;   // sum of absolute channel differences
        std::uint32_t mCovered = 0; // pixels
        bool mMismatch = false;     // a pixel is covered in one and not in the other
    };

    static RowResult CompareRow(const NvGIFPlayer::Pixel* inOriginal, const NvGIFPlayer::Pixel* inCandidate,
                                std::uint32_t inWidth) {
        RowResult result;
        const auto* original = reinterpret_cast<const std::uint8_t*>(inOriginal);
        const auto* candidate = reinterpret_cast<const std::uint8_t*>(inCandidate);
        std::uint32_t error = 0; // 65535 pixels cannot exceed it; compilers know sums of 32 bits of this form
        for (std::uint32_t i = 0; i < inWidth * 4; ++i)
            error += static_cast<std::uint32_t>(std::abs(original[i] - candidate[i]));
        result.mError = error;
        NvGIFPlayer::Pixel differing = 0;
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            differing |= inOriginal[x] ^ inCandidate[x];
            result.mCovered += inOriginal[x] >> 31;
        }
        result.mMismatch = (differing & NvGIFPlayer::km_Covered) != 0;
        return result;
    }

    void SetRow(std::uint32_t inRow, const RowResult& inResult) {
        RowResult& row = mRows[inRow];
        mError += inResult.mError - row.mError;
        mCovered += std::uint64_t{inResult.mCovered} - row.mCovered;
        mMismatchedRows += static_cast<int>(inResult.mMismatch) - static_cast<int>(row.mMismatch);
        row = inResult;
    }

    std::vector<RowResult> mRows;
    std::uint64_t mError = 0;
    std::uint64_t mCovered = 0;
    int mMismatchedRows = 0;
};

// A frame of fewer windows than this is too small for its structure to be judged by similarity.
constexpr std::uint32_t km_SizableArea = 32;
constexpr double km_LeastStructure = 0.80; // below it the eye is caught
constexpr double km_GoodStructure = 0.97;  // from it on there is nothing to gain
constexpr std::uint32_t km_FramesMeasured = 48;

double StructureOf(const PvFrameLook& inLook) {
    return inLook.mContrastWindows >= km_SizableArea ? inLook.mContrastSsim : 1.0;
}

/** What the measured frames come to. */
class Looks {
public:
    void Add(const PvFrameLook& inLook) {
        const auto rank = [](const PvFrameLook& inAny) {
            return std::make_pair(StructureOf(inAny), inAny.mSsim);
        };
        if (rank(inLook) < rank(mWorst))
            mWorst = inLook;
        mStructureSum += StructureOf(inLook);
        ++mCount;
    }

    const PvFrameLook& Worst() const { return mWorst; }
    double MeanStructure() const { return mCount == 0 ? 1.0 : mStructureSum / mCount; }

private:
    PvFrameLook mWorst;
    double mStructureSum = 0.0;
    std::uint32_t mCount = 0;
};

std::string InFrame(std::uint32_t inIndex, const char* inWhat) {
    return "frame " + std::to_string(inIndex + 1) + " " + inWhat;
}

/** Plays both to the end, or to the first thing that must not differ; keeps how the frames look on the way.
 */
std::string PlayBoth(PvFrameReader& ioOriginal, PvFrameReader& ioCandidate,
                     const PvColourAllowance& inAllowance, PvComparison& ioComparison) {
    NvGIFPlayer originalPlayer(ioOriginal.GetScreenWidth(), ioOriginal.GetScreenHeight());
    NvGIFPlayer candidatePlayer(ioCandidate.GetScreenWidth(), ioCandidate.GetScreenHeight());
    CanvasComparison comparison(ioOriginal.GetScreenHeight());
    PvLookMeter meter(ioOriginal.GetScreenWidth(), ioOriginal.GetScreenHeight());
    Looks looks;
    Rows changedSinceMeasured;
    const std::uint32_t count = ioOriginal.GetFrameCount();
    const std::uint32_t measureEvery = (count + km_FramesMeasured - 1) / km_FramesMeasured;
    for (std::uint32_t i = 0; i < count; ++i) {
        const NvGIFFrameInfo& original = ioOriginal.PlayFrame(i, originalPlayer);
        const NvGIFFrameInfo& candidate = ioCandidate.PlayFrame(i, candidatePlayer);
        if (original.mDelay != candidate.mDelay)
            return InFrame(i, "would be shown for another time");
        if (original.mUserInput != candidate.mUserInput)
            return InFrame(i, "would wait differently for the user");
        const Rows changed = ChangedRows(originalPlayer, candidatePlayer);
        comparison.Update(originalPlayer, candidatePlayer, changed);
        changedSinceMeasured.Add(changed);
        if (!comparison.SamePixelsCovered())
            return InFrame(i, "would cover other pixels");
        const double moved = comparison.CoveredPixels() == 0
                                 ? 0.0
                                 : inAllowance.mMovedPixels / static_cast<double>(comparison.CoveredPixels());
        // A pixel only ever trades places with one whose channels differ by at most 128.
        if (comparison.MeanError() > inAllowance.mMeanError + 128.0 * std::min(1.0, moved))
            return InFrame(i, "would show other colours");
        if ((count - 1 - i) % measureEvery == 0) {
            const Rows rows = std::exchange(changedSinceMeasured, Rows{});
            looks.Add(meter.Measure(originalPlayer, candidatePlayer, rows.mTop, rows.mBottom));
        }
    }
    ioComparison.mWorstLook = looks.Worst();
    ioComparison.mMeanStructure = looks.MeanStructure();
    return {};
}

} // namespace

double PvComparison::GetStructure() const {
    return StructureOf(mWorstLook);
}

bool PvComparison::HasLostStructure() const {
    return GetStructure() < km_LeastStructure;
}

bool PvComparison::MayLookBetter() const {
    return GetStructure() < km_GoodStructure || mWorstLook.mSsim < km_LeastStructure;
}

PvComparison PvCompareGIFs(const char* inOriginalPath, const char* inCandidatePath,
                           const PvColourAllowance& inAllowance) {
    PvComparison comparison;
    PvFrameReader original(inOriginalPath);
    try {
        PvFrameReader candidate(inCandidatePath);
        comparison.mReason = CompareFiles(original, candidate);
        if (comparison.mReason.empty())
            comparison.mReason = PlayBoth(original, candidate, inAllowance, comparison);
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_OutOfMemory)
            throw;
        comparison.mReason = "the result could not be read back";
    }
    return comparison;
}
