#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

/** What becomes of a frame's pixel when the frame is laid down on the screen. Bits, so that those of several
 *  pixels can be joined. */
enum PvPixelState : std::uint8_t {
    km_Undrawn = 0,
    km_Drawn = 1,
    km_MadeTransparent = 2, ///< drawn in the file; the screen shows its colour already, exactly or nearly
};

/** A frame that was laid down on the screen. Colours are packed; 0 where the screen shows nothing. */
struct PvLaidFrame {
    std::uint32_t mWidth;  ///< pixels
    std::uint32_t mHeight; ///< pixels
    std::function<const std::uint8_t*(std::uint32_t inY)> mIndices;
    std::function<const std::uint32_t*(std::uint32_t inY)> mShown; ///< what the screen shows now
    std::function<const std::uint8_t*(std::uint32_t inY)> mStates; ///< PvPixelState
    const std::uint32_t* mColours;                                 ///< of the indices
};

/** Finds where a frame would tear because pixels are left standing that are only nearly right.
 *
 *  An area that keeps showing what an earlier frame showed is merely late, which goes unnoticed. One in
 *  which new pixels stand among old ones looks like no moment of the animation: outlines stay behind whatever
 *  moved. So the frame is looked at through windows of 8 x 8 pixels, every 4 pixels. Where a window holds
 *  both, the error of the old pixels is weighed against the contrast there, as structural similarity does:
 *  Z. Wang, A. C. Bovik, H. R. Sheikh and E. P. Simoncelli, "Image Quality Assessment: From Error Visibility
 *  to Structural Similarity", 2004. */
class PvTearGuard {
public:
    /** Calls inVisit for each piece of a row that lies in a torn window, every pixel once.
     *  @param inVisit  takes the row and the columns from the first up to the end given */
    using Visitor = std::function<void(std::uint32_t inY, std::uint32_t inFirst, std::uint32_t inEnd)>;
    void VisitTears(const PvLaidFrame& inFrame, const Visitor& inVisit);

private:
    /** Of the pixels of one block: luma as it ought to be and as it is shown, and squared errors. */
    struct Block {
        std::uint32_t mWanted = 0;
        std::uint32_t mWantedSquares = 0;
        std::uint32_t mShown = 0;
        std::uint32_t mShownSquares = 0;
        std::uint32_t mErrors = 0; // of all three channels
        std::uint32_t mPixels = 0;
    };

    /** A range of columns, of blocks or of windows. */
    struct Columns {
        std::uint32_t mFirst = UINT32_MAX;
        std::uint32_t mEnd = 0;

        bool IsEmpty() const { return mFirst >= mEnd; }
        void Add(const Columns& inOther);
    };

    void CollectStates(const PvLaidFrame& inFrame);
    Columns FindMixedWindows(std::uint32_t inRow) const;
    void SumBlocks(const PvLaidFrame& inFrame, std::uint32_t inRow, const Columns& inColumns);
    void AddPixels(const PvLaidFrame& inFrame, std::uint32_t inY, const Columns& inPixels);
    void JudgeWindows(std::uint32_t inRow, const Columns& inColumns);
    void Mend(std::size_t inBlock);
    void VisitBlocks(const PvLaidFrame& inFrame, const Visitor& inVisit) const;

    /** The four blocks of a window; those of a frame of less than two blocks are the same ones. */
    template <typename Work>
    void ForEachBlockOf(std::uint32_t inColumn, std::uint32_t inRow, Work inWork) const;

    std::uint32_t mBlockColumns = 0;
    std::uint32_t mBlockRows = 0;
    std::vector<std::uint8_t> mStates; // joined, by block; all of these row-major
    std::vector<Block> mBlocks;
    std::vector<std::uint8_t> mTorn; // by block

    // Of one row of pixels or, summed, of blocks, by column.
    std::vector<std::uint32_t> mWanted;
    std::vector<std::uint32_t> mSums;
};
