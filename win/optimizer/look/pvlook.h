#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/base/pvframelook.h"

class NvGIFFrame;
class NvIndexedImage;

/** Fills in mPsnr and mMaxError, which PvLookMeter leaves alone. Both canvases are of one size. */
void PvMeasureErrors(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond, PvFrameLook& ioLook);

/** Measures displayed frames beside each other.
 *
 *  Structural similarity is taken over windows of 8 x 8 pixels every 4 pixels, the picture's edge repeated up
 *  to a multiple of 4 and at least 8; transparent pixels count as mid grey. After Z. Wang, A. C. Bovik, H. R.
 *  Sheikh and E. P. Simoncelli, "Image Quality Assessment: From Error Visibility to Structural Similarity",
 *  2004, with a flat window. */
class PvLookMeter {
public:
    /** @param inWidth         of both canvases, pixels
     *  @param inHeight        of both canvases, pixels
     *  @param inMeasuresOnce  spares what a second measurement would need */
    PvLookMeter(std::uint32_t inWidth, std::uint32_t inHeight, bool inMeasuresOnce = false);

    using Columns = NvGIFPlayer::Columns;

    /** Measures two whole canvases. */
    PvFrameLook Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond);

    /** The same when not all pixels may have changed since the last measurement; at the first all have.
     *  @param inChanged  columns that may have, by row */
    PvFrameLook Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                        const std::vector<Columns>& inChanged);

    /** Measures a frame by itself beside other pixels for it, undrawn ones as mid grey. Both are of the
     * meter's size. */
    PvFrameLook Measure(const NvGIFFrame& inFrame, const NvIndexedImage& inOther);

private:
    /** Writes the luma of a row's columns from the first given up to the end given. */
    using LumaSource =
        std::function<void(std::uint32_t inY, const Columns& inColumns, std::uint8_t* outLuma)>;

    /** Sums over the 4 x 4 pixels of a block. 16 times 255 takes 12 bits, 16 times its square the 20 above.
     */
    struct Block {
        std::uint32_t mFirst = 0; // sum and sum of squares
        std::uint32_t mSecond = 0;
        std::uint32_t mProducts = 0;
    };
    static constexpr std::uint32_t km_SquaresShift = 12;
    static constexpr std::uint32_t km_SumMask = (1U << km_SquaresShift) - 1;

    /** The same over the four blocks of a window. */
    struct Window {
        std::uint32_t mFirst = 0;
        std::uint32_t mFirstSquares = 0;
        std::uint32_t mSecond = 0;
        std::uint32_t mSecondSquares = 0;
        std::uint32_t mProducts = 0;
    };

    /** What a row of windows comes to. */
    struct WindowRow {
        double mSsim = 0.0;
        double mContrastSsim = 0.0;
        std::uint32_t mContrastWindows = 0;
    };

    PvFrameLook MeasureChanged(const LumaSource& inFirst, const LumaSource& inSecond,
                               const std::vector<Columns>* inChanged);
    Columns ChangedBlocks(const std::vector<Columns>& inChanged, std::uint32_t inBlockRow) const;
    void SumBlocks(const LumaSource& inFirst, const LumaSource& inSecond, std::uint32_t inBlockRow,
                   const Columns& inBlocks);
    void SumWindows(std::uint32_t inWindowRow);
    Block* BlockRow(std::uint32_t inRow) {
        return mBlocks.data() + std::size_t{mBlockColumns} * (inRow % mKeptRows);
    }
    static double WindowSsim(const Window& inSums, bool& outHasContrast);
    PvFrameLook Summarize() const;

    std::uint32_t mWidth;
    std::uint32_t mHeight;
    std::uint32_t mBlockColumns;
    std::uint32_t mBlockRows;
    std::uint32_t mKeptRows; // of blocks
    bool mHasMeasured = false;
    std::vector<Block> mBlocks;          // row-major, the kept rows in turn
    std::vector<WindowRow> mWindowRows;  // each of two rows of blocks
    std::vector<Columns> mChangedBlocks; // by row of blocks
    std::vector<std::uint8_t> mLuma;     // four rows of the first canvas, four of the second, in whole blocks
    std::vector<std::uint32_t>
        mColumns; // sums over the four rows: first, its squares, second, its squares, products
};
