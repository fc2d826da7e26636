#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "nvcode2/gif/nvgifplayer.h"
#include "win/optimizer/base/pvframelook.h"

class NvGIFFrame;
class NvIndexedImage;

/** Measures how close displayed frames look to each other.
 *
 *  Structural similarity is taken over windows of 8 x 8 pixels every 4 pixels, the picture's edge repeated up
 *  to a multiple of 4 and at least 8; transparent pixels count as mid grey. After Z. Wang, A. C. Bovik, H. R.
 *  Sheikh and E. P. Simoncelli, "Image Quality Assessment: From Error Visibility to Structural Similarity",
 *  2004, with a flat window. */
class PvLookMeter {
public:
    /** @param inWidth         of both canvases, pixels
     *  @param inHeight        of both canvases, pixels
     *  @param inMeasuresOnce  keep only what one measurement needs */
    PvLookMeter(std::uint32_t inWidth, std::uint32_t inHeight, bool inMeasuresOnce = false);

    using Columns = NvGIFPlayer::Columns;

    /** Measures two whole canvases. */
    PvFrameLook Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond);

    /** Measures again after a change; the first measurement takes the whole canvases whatever changed.
     *  @param inChanged  the columns that may have changed since the last measurement, by row */
    PvFrameLook Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                        const std::vector<Columns>& inChanged);

    /** Measures a frame beside other pixels for it, both of the meter's size, undrawn pixels as mid grey. */
    PvFrameLook Measure(const NvGIFFrame& inFrame, const NvIndexedImage& inOther);

private:
    /** Writes the luma of some columns of a row. */
    using LumaSource =
        std::function<void(std::uint32_t inY, const Columns& inColumns, std::uint8_t* outLuma)>;

    /** Sums over the 4 x 4 pixels of a block. A sum (16 times 255 at most) takes the lower 12 bits of a
     *  word, the sum of squares the 20 above. */
    struct Block {
        std::uint32_t mFirst = 0;
        std::uint32_t mSecond = 0;
        std::uint32_t mProducts = 0;
    };
    static constexpr std::uint32_t km_SquaresShift = 12;
    static constexpr std::uint32_t km_SumMask = (1U << km_SquaresShift) - 1;

    /** Sums over the four blocks of a window. */
    struct Window {
        std::uint32_t mFirst = 0;
        std::uint32_t mFirstSquares = 0;
        std::uint32_t mSecond = 0;
        std::uint32_t mSecondSquares = 0;
        std::uint32_t mProducts = 0;
    };

    /** Sums over a row of windows. */
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
    std::vector<Block> mBlocks;          // row-major, row y in place y modulo mKeptRows
    std::vector<WindowRow> mWindowRows;  // row y spans rows y and y + 1 of blocks
    std::vector<Columns> mChangedBlocks; // by row of blocks
    std::vector<std::uint8_t> mLuma;     // four rows of the first canvas, four of the second, in whole blocks

    // Sums over the four rows by column: first, its squares, second, its squares, products.
    std::vector<std::uint32_t> mColumns;
};
