#include "win/optimizer/look/pvcanvascomparison.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

PvCanvasComparison::PvCanvasComparison(std::uint32_t inWidth, std::uint32_t inHeight,
                                       const PvColourAllowance& inAllowance)
    : mAllowance(inAllowance),
      mWidth(inWidth),
      mPiecesPerRow((inWidth + km_PieceWidth - 1) / km_PieceWidth),
      mPieces(std::size_t{mPiecesPerRow} * inHeight),
      mOriginal(inWidth),
      mCandidate(inWidth),
      mAllowed(inWidth),
      mHasMoved(std::any_of(inAllowance.mMovedPixels.begin(), inAllowance.mMovedPixels.end(),
                            [](std::uint32_t inPixels) { return inPixels != 0; })) {
    if (!mHasMoved)
        return;
    mExcused.resize(mPieces.size());
    mBefore.resize(std::size_t{inWidth} * inHeight);
}

void PvCanvasComparison::BeginFrame(std::uint32_t inIndex, bool inMayUndo) {
    mMovedNow = inIndex < mAllowance.mMovedPixels.size() ? mAllowance.mMovedPixels[inIndex] : 0;
    mMovedInAll += mMovedNow;
    mExcusedNow = 0;
    mMayUndo = inMayUndo;
}

void PvCanvasComparison::Update(const NvGIFPlayer& inOriginal, const NvGIFPlayer& inCandidate,
                                std::uint32_t inY, const Columns& inColumns) {
    if (inColumns.IsEmpty())
        return;
    const std::uint32_t firstPiece = inColumns.mFirst / km_PieceWidth;
    const std::uint32_t endPiece = (inColumns.mEnd + km_PieceWidth - 1) / km_PieceWidth;
    const Columns read{firstPiece * km_PieceWidth, std::min(endPiece * km_PieceWidth, mWidth)};
    inOriginal.Read(inY, read, mOriginal.data());
    inCandidate.Read(inY, read, mCandidate.data());
    const std::uint8_t* allowed = nullptr; // read where it is needed
    for (std::uint32_t i = firstPiece; i < endPiece; ++i) {
        const std::uint32_t begin = (i - firstPiece) * km_PieceWidth;
        const std::uint32_t count = std::min(read.mEnd - read.mFirst - begin, km_PieceWidth);
        const Pixel* original = mOriginal.data() + begin;
        const Pixel* candidate = mCandidate.data() + begin;
        const std::size_t place = std::size_t{inY} * mPiecesPerRow + i;
        const Piece now = ComparePiece(original, candidate, count, mSamePixelsCovered);
        Piece& piece = mPieces[place];
        mSquares += std::uint64_t{now.mSquares} - piece.mSquares;
        mCovered += std::uint64_t{now.mCovered} - piece.mCovered;
        piece = now;
        Bits beyond = 0;
        if (now.mMax > mAllowance.mTolerance) {
            if (!allowed)
                allowed = ReadAllowed(inOriginal, inY, read);
            beyond = FindBeyond(original, candidate, allowed + begin, count);
        }
        if (mHasMoved)
            Excuse(place, beyond,
                   TakeOver(candidate, std::size_t{inY} * mWidth + read.mFirst + begin, count));
        else
            mExcusedNow += beyond != 0 ? 1 : 0;
    }
}

/** What pixels may be off by. */
const std::uint8_t* PvCanvasComparison::ReadAllowed(const NvGIFPlayer& inOriginal, std::uint32_t inY,
                                                    const Columns& inColumns) {
    const auto allowedFor = [this](Pixel inColour) {
        return static_cast<std::uint8_t>(
            std::min(mAllowance.mTolerance + mAllowance.mPalette.Find(inColour), 255U));
    };
    const NvGIFCanvas& canvas = inOriginal.GetCanvas();
    const std::vector<Pixel>& colours = canvas.GetColours();
    for (std::size_t i = mAllowedByNumber.size(); i < colours.size(); ++i)
        mAllowedByNumber.push_back(allowedFor(colours[i]));
    canvas.Read(inY, inColumns, mAllowedByNumber, allowedFor, mAllowed.data());
    return mAllowed.data();
}

PvCanvasComparison::Piece PvCanvasComparison::ComparePiece(const Pixel* inOriginal, const Pixel* inCandidate,
                                                           std::uint32_t inCount, bool& ioSameCovered) {
    Piece piece;
    std::uint32_t covered = 0;
    Pixel differing = 0;
    for (std::uint32_t x = 0; x < inCount; ++x) {
        differing |= inOriginal[x] ^ inCandidate[x];
        covered += inOriginal[x] >> 31;
    }
    piece.mCovered = static_cast<std::uint8_t>(covered);
    if (differing == 0)
        return piece;
    if ((differing & NvGIFPlayer::km_Covered) != 0)
        ioSameCovered = false;
    const auto* original = reinterpret_cast<const std::uint8_t*>(inOriginal);
    const auto* candidate = reinterpret_cast<const std::uint8_t*>(inCandidate);
    std::int32_t squares = 0; // compilers make vector code of 32-bit sums of this form
    std::uint8_t max = 0;
    for (std::uint32_t i = 0; i < inCount * 4; ++i) {
        const auto difference = static_cast<std::int16_t>(original[i] - candidate[i]);
        squares += difference * difference;
    }
    for (std::uint32_t i = 0; i < inCount * 4; ++i) {
        const auto difference = static_cast<std::uint8_t>(
            original[i] > candidate[i] ? original[i] - candidate[i] : candidate[i] - original[i]);
        max = difference > max ? difference : max;
    }
    piece.mSquares = static_cast<std::uint32_t>(squares);
    piece.mMax = max;
    return piece;
}

/** The pixels that are off by more than they may be. */
PvCanvasComparison::Bits PvCanvasComparison::FindBeyond(const Pixel* inOriginal, const Pixel* inCandidate,
                                                        const std::uint8_t* inAllowed,
                                                        std::uint32_t inCount) {
    Bits beyond = 0;
    for (std::uint32_t x = 0; x < inCount; ++x) {
        int max = 0;
        for (const std::uint32_t shift : {0U, 8U, 16U})
            max = std::max(max, std::abs(static_cast<int>(inOriginal[x] >> shift & 0xFF) -
                                         static_cast<int>(inCandidate[x] >> shift & 0xFF)));
        beyond |= Bits{max > inAllowed[x] ? 1U : 0U} << x;
    }
    return beyond;
}

/** Keeps what the candidate displays in a piece.
 *  @param inPlace  of its first pixel
 *  @return         the pixels that are different now */
PvCanvasComparison::Bits PvCanvasComparison::TakeOver(const Pixel* inCandidate, std::size_t inPlace,
                                                      std::uint32_t inCount) {
    Pixel* before = mBefore.data() + inPlace;
    if (std::equal(before, before + inCount, inCandidate))
        return 0;
    Bits redrawn = 0;
    for (std::uint32_t x = 0; x < inCount; ++x)
        redrawn |= Bits{before[x] != inCandidate[x] ? 1U : 0U} << x;
    std::copy_n(inCandidate, inCount, before);
    return redrawn;
}

// A pixel found to be exchanged must not be held against the frames that it stays for: each is charged once,
// to the frame that draws it when that is seen, otherwise to any frame up to this one. What is put back later
// may have been excused before it was drawn over.
void PvCanvasComparison::Excuse(std::size_t inPiece, Bits inBeyond, Bits inRedrawn) {
    Bits& excused = mExcused[inPiece];
    if (!mMayUndo)
        excused &= ~inRedrawn;
    const Bits found = inBeyond & ~excused;
    excused |= found;
    mExcusedNow += static_cast<std::uint64_t>(std::popcount(found & inRedrawn));
    mExcusedInAll += static_cast<std::uint64_t>(std::popcount(found));
}

void PvCanvasComparison::MeasureErrors(PvFrameLook& ioLook) const {
    ioLook.mMaxError = 0;
    for (const Piece& piece : mPieces)
        ioLook.mMaxError = std::max<std::uint32_t>(ioLook.mMaxError, piece.mMax);
    ioLook.mPsnr = PvFrameLook::km_MaxPsnr;
    if (mSquares > 0) {
        const double meanSquare = static_cast<double>(mSquares) / (3.0 * static_cast<double>(mCovered));
        ioLook.mPsnr = std::min(PvFrameLook::km_MaxPsnr, 10.0 * std::log10(255.0 * 255.0 / meanSquare));
    }
}
