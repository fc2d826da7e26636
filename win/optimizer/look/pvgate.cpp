#include "win/optimizer/look/pvgate.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/look/pvlookseries.h"
#include "wnatom/wnsystem.h"

namespace {

/** Without the empty ones, which are never written. */
std::vector<std::string> CommentsOf(const NvGIFGlobalInfo& inInfo) {
    std::vector<std::string> comments = inInfo.mComments.GetTexts();
    std::erase(comments, std::string());
    return comments;
}

/** What differs in all that is said once per file; empty when nothing does. */
std::string CompareFiles(const NvGIFFrameReader& inOriginal, const NvGIFFrameReader& inCandidate) {
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

using Columns = NvGIFPlayer::Columns;

/** Compares two canvases piece by piece and keeps each piece's result until it changes again. */
class CanvasComparison {
public:
    CanvasComparison(std::uint32_t inWidth, std::uint32_t inHeight)
        : mPiecesPerRow((inWidth + km_PieceWidth - 1) / km_PieceWidth),
          mPieces(std::size_t{mPiecesPerRow} * inHeight),
          mOriginal(inWidth),
          mCandidate(inWidth) {}

    /** Compares some columns of a row again, those that changed. */
    void Update(const NvGIFPlayer& inOriginal, const NvGIFPlayer& inCandidate, std::uint32_t inY,
                const Columns& inColumns) {
        if (inColumns.IsEmpty())
            return;
        const auto width = static_cast<std::uint32_t>(mOriginal.size());
        const std::uint32_t firstPiece = inColumns.mFirst / km_PieceWidth;
        const std::uint32_t endPiece = (inColumns.mEnd + km_PieceWidth - 1) / km_PieceWidth;
        const Columns read{firstPiece * km_PieceWidth, std::min(endPiece * km_PieceWidth, width)};
        inOriginal.Read(inY, read, mOriginal.data());
        inCandidate.Read(inY, read, mCandidate.data());
        for (std::uint32_t i = firstPiece; i < endPiece; ++i) {
            const std::uint32_t begin = (i - firstPiece) * km_PieceWidth;
            const Piece now = ComparePiece(mOriginal.data() + begin, mCandidate.data() + begin,
                                           std::min(read.mEnd - read.mFirst - begin, km_PieceWidth));
            Piece& piece = mPieces[std::size_t{inY} * mPiecesPerRow + i];
            mError += std::uint64_t{now.mError} - piece.mError;
            mCovered += std::uint64_t{now.mCovered} - piece.mCovered;
            piece = now;
        }
    }

    /** Whether the same pixels were covered in both, ever since. */
    bool SamePixelsCovered() const { return mSamePixelsCovered; }
    std::uint64_t CoveredPixels() const { return mCovered; }

    /** Levels per channel over the covered pixels. */
    double MeanError() const {
        return mCovered == 0 ? 0.0 : static_cast<double>(mError) / (3.0 * static_cast<double>(mCovered));
    }

private:
    static constexpr std::uint32_t km_PieceWidth = 64; // pixels

    struct Piece {
        std::uint16_t mError = 0;   // sum of absolute channel differences, at most 64 * 3 * 255
        std::uint16_t mCovered = 0; // pixels
    };

    Piece ComparePiece(const NvGIFPlayer::Pixel* inOriginal, const NvGIFPlayer::Pixel* inCandidate,
                       std::uint32_t inCount) {
        const auto* original = reinterpret_cast<const std::uint8_t*>(inOriginal);
        const auto* candidate = reinterpret_cast<const std::uint8_t*>(inCandidate);
        std::uint32_t error = 0; // compilers know sums of 32 bits of this form
        for (std::uint32_t i = 0; i < inCount * 4; ++i)
            error += static_cast<std::uint32_t>(std::abs(original[i] - candidate[i]));
        std::uint32_t covered = 0;
        NvGIFPlayer::Pixel differing = 0;
        for (std::uint32_t x = 0; x < inCount; ++x) {
            differing |= inOriginal[x] ^ inCandidate[x];
            covered += inOriginal[x] >> 31;
        }
        if ((differing & NvGIFPlayer::km_Covered) != 0)
            mSamePixelsCovered = false;
        return {static_cast<std::uint16_t>(error), static_cast<std::uint16_t>(covered)};
    }

    std::uint32_t mPiecesPerRow;
    std::vector<Piece> mPieces;                 // row-major
    std::vector<NvGIFPlayer::Pixel> mOriginal;  // of the row in hand
    std::vector<NvGIFPlayer::Pixel> mCandidate; // the same
    std::uint64_t mError = 0;
    std::uint64_t mCovered = 0;
    bool mSamePixelsCovered = true;
};

constexpr double km_LeastStructure = 0.80; // below it the eye is caught
constexpr double km_GoodStructure = 0.97;  // from it on there is nothing to gain

std::string InFrame(std::uint32_t inIndex, const char* inWhat) {
    return "frame " + std::to_string(inIndex + 1) + " " + inWhat;
}

/** Plays both to the end, or to the first thing that must not differ; keeps how the frames look on the way.
 */
std::string PlayBoth(NvGIFFrameReader& ioOriginal, NvGIFFrameReader& ioCandidate,
                     const PvColourAllowance& inAllowance, PvComparison& ioComparison) {
    NvGIFPlayer originalPlayer(ioOriginal.GetScreenWidth(), ioOriginal.GetScreenHeight());
    NvGIFPlayer candidatePlayer(ioCandidate.GetScreenWidth(), ioCandidate.GetScreenHeight());
    CanvasComparison comparison(ioOriginal.GetScreenWidth(), ioOriginal.GetScreenHeight());
    const std::uint32_t count = ioOriginal.GetFrameCount();
    PvLookSeries looks(ioOriginal.GetScreenWidth(), ioOriginal.GetScreenHeight(), count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const NvGIFFrameInfo& original = ioOriginal.PlayFrame(i, originalPlayer);
        const NvGIFFrameInfo& candidate = ioCandidate.PlayFrame(i, candidatePlayer);
        if (original.mDelay != candidate.mDelay)
            return InFrame(i, "would be shown for another time");
        if (original.mUserInput != candidate.mUserInput)
            return InFrame(i, "would wait differently for the user");
        // What was taken for unchanged all the time is looked at once more in the end.
        const bool isLast = i + 1 == count;
        for (std::uint32_t y = 0; y < ioOriginal.GetScreenHeight(); ++y)
            comparison.Update(originalPlayer, candidatePlayer, y,
                              isLast ? Columns{0, ioOriginal.GetScreenWidth()}
                                     : PvChangedColumns(originalPlayer, candidatePlayer, y));
        if (!comparison.SamePixelsCovered())
            return InFrame(i, "would cover other pixels");
        const double moved = comparison.CoveredPixels() == 0
                                 ? 0.0
                                 : inAllowance.mMovedPixels / static_cast<double>(comparison.CoveredPixels());
        // A pixel only ever trades places with one whose channels differ by at most 128.
        if (comparison.MeanError() > inAllowance.mMeanError + 128.0 * std::min(1.0, moved))
            return InFrame(i, "would show other colours");
        looks.ShowFrame(originalPlayer, candidatePlayer);
    }
    ioComparison.mWorstLook = looks.GetWorst();
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
                           const PvColourAllowance& inAllowance) {
    PvComparison comparison;
    NvGIFFrameReader original(inOriginalPath, WnGetUsualMemoryLimit());
    try {
        NvGIFFrameReader candidate(inCandidatePath, WnGetUsualMemoryLimit());
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
