#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/base/pvcolourerrors.h"
#include "win/optimizer/base/pvframelook.h"

/** What may make the colours of displayed frames differ from the original's. */
struct PvColourAllowance {
    PvColourErrors mPalette; ///< settled

    /** Levels per channel at which a pixel counts as the one already on the screen. */
    std::uint32_t mTolerance = 0;

    /** Pixels of each frame that changed places with a neighbour; empty when none did. */
    std::vector<std::uint32_t> mMovedPixels;
};

/** Compares two canvases, an original and what is to replace it, while their animations play.
 *
 *  Canvases are compared in pieces of a row, and a piece's result is kept until it changes again. A pixel may
 *  be off by what the palette makes of its colour and the tolerance together. One that is off by more must
 *  have changed places with a neighbour: each frame may have as many of those as it exchanged pixels, and
 *  they stay excused until they are drawn anew. */
class PvCanvasComparison {
public:
    using Columns = NvGIFPlayer::Columns;

    /** @param inWidth      of both canvases, pixels
     *  @param inHeight     of both canvases, pixels
     *  @param inAllowance  borrowed */
    PvCanvasComparison(std::uint32_t inWidth, std::uint32_t inHeight, const PvColourAllowance& inAllowance);

    /** Comes before the rows of a frame.
     *  @param inMayUndo  whether this frame, or the one before it, puts back pixels that were shown earlier
     */
    void BeginFrame(std::uint32_t inIndex, bool inMayUndo);

    /** Compares some columns of a row, all that have changed among them. */
    void Update(const NvGIFPlayer& inOriginal, const NvGIFPlayer& inCandidate, std::uint32_t inY,
                const Columns& inColumns);

    /** Whether the same pixels have always been covered. */
    bool SamePixelsCovered() const { return mSamePixelsCovered; }

    /** Whether exchanges explain all pixels that the rest of the allowance does not. */
    bool ColoursAreExplained() const { return mExcusedNow <= mMovedNow && mExcusedInAll <= mMovedInAll; }

    /** Computes mPsnr and mMaxError of what is displayed, which PvLookMeter leaves alone. */
    void MeasureErrors(PvFrameLook& ioLook) const;

private:
    using Pixel = NvGIFPlayer::Pixel;
    using Bits = std::uint64_t; // the first pixel of a piece is bit 0

    static constexpr std::uint32_t km_PieceWidth = 64; // pixels

    struct Piece {
        std::uint32_t mSquares = 0; // sum of squared differences over all channels of its pixels
        std::uint8_t mCovered = 0;  // pixels
        std::uint8_t mMax = 0;      // difference of a channel
    };

    const std::uint8_t* ReadAllowed(const NvGIFPlayer& inOriginal, std::uint32_t inY,
                                    const Columns& inColumns);
    static Piece ComparePiece(const Pixel* inOriginal, const Pixel* inCandidate, std::uint32_t inCount,
                              bool& ioSameCovered);
    static Bits FindBeyond(const Pixel* inOriginal, const Pixel* inCandidate, const std::uint8_t* inAllowed,
                           std::uint32_t inCount);
    void Excuse(std::size_t inPiece, Bits inBeyond, Bits inRedrawn);
    Bits TakeOver(const Pixel* inCandidate, std::size_t inPlace, std::uint32_t inCount);

    const PvColourAllowance& mAllowance;
    std::uint32_t mWidth;
    std::uint32_t mPiecesPerRow;
    std::vector<Piece> mPieces;                 // row-major
    std::vector<Pixel> mOriginal;               // of the row in hand
    std::vector<Pixel> mCandidate;              // the same
    std::vector<std::uint8_t> mAllowed;         // the same, levels
    std::vector<std::uint8_t> mAllowedByNumber; // of each colour of the original's canvas
    std::uint64_t mSquares = 0;
    std::uint64_t mCovered = 0;
    bool mSamePixelsCovered = true;

    // Where pixels were exchanged.
    bool mHasMoved;
    bool mMayUndo = false;
    std::vector<Bits> mExcused;  // by piece
    std::vector<Pixel> mBefore;  // what the candidate displayed before, row-major
    std::uint64_t mMovedNow = 0; // these two of the frame in hand
    std::uint64_t mExcusedNow = 0;
    std::uint64_t mMovedInAll = 0; // these two up to it
    std::uint64_t mExcusedInAll = 0;
};
