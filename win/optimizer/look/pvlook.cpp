#include "win/optimizer/look/pvlook.h"

#include <algorithm>
#include <array>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/image/nvmaskrow.h"

namespace {

constexpr std::uint32_t km_BlockSize = 4;
constexpr std::uint32_t km_WindowPixels = 64;
constexpr std::uint8_t km_MidGrey = 128;

// The usual (0.01 * 255)^2 and (0.03 * 255)^2.
constexpr double km_C1 = 6.5025;
constexpr double km_C2 = 58.5225;

// A window shows something when its luma varies by more than rounding; a flat one has no structure to lose.
constexpr double km_ContrastVariance = 2.0;

std::uint32_t BlocksFor(std::uint32_t inPixels) {
    return std::max<std::uint32_t>((inPixels + km_BlockSize - 1) / km_BlockSize, 2);
}

/** Transparent pixels are mid grey. */
std::uint8_t Luma(NvGIFPlayer::Pixel inPixel) {
    return inPixel == 0 ? km_MidGrey : NvLumaOf(inPixel);
}

/** Reads the luma of what a canvas shows. */
class CanvasLuma {
public:
    explicit CanvasLuma(const NvGIFPlayer& inPlayer) : mCanvas(inPlayer.GetCanvas()) {
        for (const NvGIFPlayer::Pixel colour : mCanvas.GetColours())
            mLuma.push_back(Luma(colour));
    }

    void operator()(std::uint32_t inY, const NvGIFPlayer::Columns& inColumns, std::uint8_t* outLuma) const {
        mCanvas.Read(inY, inColumns, mLuma, Luma, outLuma);
    }

private:
    const NvGIFCanvas& mCanvas;
    std::vector<std::uint8_t> mLuma; // by colour number
};

/** Reads the luma of an image where a mask is set. */
class FrameLuma {
public:
    FrameLuma(const NvIndexedImage& inImage, const NvBitmapImage& inMask) : mPixels(inImage), mMask(inMask) {
        const NvColorTable& table = inImage.GetColorTable();
        for (std::uint32_t i = 0; i < std::min<std::uint32_t>(table.GetSize(), 256); ++i)
            mLuma[i] = Luma(NvPackColor(table.GetColor(i)) | NvGIFPlayer::km_Covered);
    }

    void operator()(std::uint32_t inY, const NvGIFPlayer::Columns& inColumns, std::uint8_t* outLuma) const {
        const std::uint8_t* row = mPixels.Row(inY);
        const std::uint32_t first = inColumns.mFirst;
        const std::uint32_t end = inColumns.mEnd;
        for (std::uint32_t x = first; x < end; ++x)
            outLuma[x - first] = mLuma[row[x]];
        NvForEachRun(mMask.Row(inY), end, false, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            if (inEnd > first)
                std::fill(outLuma + (std::max(inFirst, first) - first), outLuma + (inEnd - first),
                          km_MidGrey);
        });
    }

private:
    NvConstPixelLock mPixels;
    NvConstPixelLock mMask;
    std::array<std::uint8_t, 256> mLuma{};
};

} // namespace

PvLookMeter::PvLookMeter(std::uint32_t inWidth, std::uint32_t inHeight, bool inMeasuresOnce)
    : mWidth(inWidth),
      mHeight(inHeight),
      mBlockColumns(BlocksFor(inWidth)),
      mBlockRows(BlocksFor(inHeight)),
      mKeptRows(inMeasuresOnce ? 2 : mBlockRows),
      mBlocks(std::size_t{mBlockColumns} * mKeptRows),
      mWindowRows(mBlockRows - 1),
      mChangedBlocks(mBlockRows),
      mLuma(std::size_t{mBlockColumns} * km_BlockSize * 2 * km_BlockSize),
      mColumns(std::size_t{mBlockColumns} * km_BlockSize * 5) {}

PvFrameLook PvLookMeter::Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    const CanvasLuma first(inFirst);
    const CanvasLuma second(inSecond);
    return MeasureChanged(std::cref(first), std::cref(second), nullptr);
}

PvFrameLook PvLookMeter::Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                                 const std::vector<Columns>& inChanged) {
    const CanvasLuma first(inFirst);
    const CanvasLuma second(inSecond);
    return MeasureChanged(std::cref(first), std::cref(second), mHasMeasured ? &inChanged : nullptr);
}

PvFrameLook PvLookMeter::Measure(const NvGIFFrame& inFrame, const NvIndexedImage& inOther) {
    const FrameLuma first(inFrame.GetImage(), inFrame.GetMask());
    const FrameLuma second(inOther, inFrame.GetMask());
    return MeasureChanged(std::cref(first), std::cref(second), nullptr);
}

/** @param inChanged  as in Measure; null: everything may have changed */
PvFrameLook PvLookMeter::MeasureChanged(const LumaSource& inFirst, const LumaSource& inSecond,
                                        const std::vector<Columns>* inChanged) {
    mHasMeasured = true;
    for (std::uint32_t row = 0; row < mBlockRows; ++row) {
        mChangedBlocks[row] = inChanged ? ChangedBlocks(*inChanged, row) : Columns{0, mBlockColumns};
        if (!mChangedBlocks[row].IsEmpty())
            SumBlocks(inFirst, inSecond, row, mChangedBlocks[row]);
        if (row > 0 && !(mChangedBlocks[row - 1].IsEmpty() && mChangedBlocks[row].IsEmpty()))
            SumWindows(row - 1);
    }
    return Summarize();
}

/** The blocks of a row that hold changed pixels. Blocks beyond the picture repeat its edge, so they change
 *  with the last column. */
PvLookMeter::Columns PvLookMeter::ChangedBlocks(const std::vector<Columns>& inChanged,
                                                std::uint32_t inBlockRow) const {
    Columns pixels;
    for (std::uint32_t i = 0; i < km_BlockSize; ++i)
        pixels.Add(inChanged[std::min(inBlockRow * km_BlockSize + i, mHeight - 1)]);
    if (pixels.IsEmpty())
        return pixels;
    return {pixels.mFirst / km_BlockSize,
            pixels.mEnd == mWidth ? mBlockColumns : (pixels.mEnd + km_BlockSize - 1) / km_BlockSize};
}

PvFrameLook PvLookMeter::Summarize() const {
    PvFrameLook look;
    WindowRow windows;
    for (const WindowRow& row : mWindowRows) {
        windows.mSsim += row.mSsim;
        windows.mContrastSsim += row.mContrastSsim;
        windows.mContrastWindows += row.mContrastWindows;
    }
    look.mSsim =
        windows.mSsim / (static_cast<double>(mBlockRows - 1) * static_cast<double>(mBlockColumns - 1));
    look.mContrastWindows = windows.mContrastWindows;
    if (look.mContrastWindows > 0)
        look.mContrastSsim = windows.mContrastSsim / look.mContrastWindows;
    return look;
}

void PvLookMeter::SumBlocks(const LumaSource& inFirst, const LumaSource& inSecond, std::uint32_t inBlockRow,
                            const Columns& inBlocks) {
    const std::size_t width = std::size_t{inBlocks.mEnd - inBlocks.mFirst} * km_BlockSize;
    const Columns pixels{inBlocks.mFirst * km_BlockSize, std::min(inBlocks.mEnd * km_BlockSize, mWidth)};
    const auto lumaRow = [&](const LumaSource& inSource, std::uint32_t inRow, std::uint8_t* outLuma) {
        inSource(std::min(inBlockRow * km_BlockSize + inRow, mHeight - 1), pixels, outLuma);
        const std::uint32_t count = pixels.mEnd - pixels.mFirst;
        std::fill(outLuma + count, outLuma + width, outLuma[count - 1]);
    };
    std::uint8_t* const second = mLuma.data() + width * km_BlockSize;
    for (std::uint32_t row = 0; row < km_BlockSize; ++row) {
        lumaRow(inFirst, row, mLuma.data() + width * row);
        lumaRow(inSecond, row, second + width * row);
    }

    // First down the columns, which compilers turn into vector code, then across each block.
    const auto sumColumns = [&](std::size_t inField, auto inValue) {
        const std::uint8_t* a = mLuma.data();
        const std::uint8_t* b = second;
        std::uint32_t* sums = mColumns.data() + width * inField;
        for (std::size_t x = 0; x < width; ++x)
            sums[x] = inValue(a[x], b[x]) + inValue(a[x + width], b[x + width]) +
                      inValue(a[x + 2 * width], b[x + 2 * width]) +
                      inValue(a[x + 3 * width], b[x + 3 * width]);
    };
    using Value = std::uint32_t;
    sumColumns(0, [](Value inA, Value) { return inA; });
    sumColumns(1, [](Value inA, Value) { return inA * inA; });
    sumColumns(2, [](Value, Value inB) { return inB; });
    sumColumns(3, [](Value, Value inB) { return inB * inB; });
    sumColumns(4, [](Value inA, Value inB) { return inA * inB; });
    const auto acrossBlock = [&](std::size_t inField, std::size_t inColumn) {
        const std::uint32_t* sums = mColumns.data() + width * inField + inColumn * km_BlockSize;
        return sums[0] + sums[1] + sums[2] + sums[3];
    };
    Block* blocks = BlockRow(inBlockRow) + inBlocks.mFirst;
    for (std::size_t column = 0; column < inBlocks.mEnd - inBlocks.mFirst; ++column) {
        blocks[column].mFirst = acrossBlock(0, column) | acrossBlock(1, column) << km_SquaresShift;
        blocks[column].mSecond = acrossBlock(2, column) | acrossBlock(3, column) << km_SquaresShift;
        blocks[column].mProducts = acrossBlock(4, column);
    }
}

void PvLookMeter::SumWindows(std::uint32_t inWindowRow) {
    const Block* above = BlockRow(inWindowRow);
    const Block* below = BlockRow(inWindowRow + 1);
    WindowRow row;
    for (std::uint32_t column = 1; column < mBlockColumns; ++column) {
        Window window;
        for (const Block* block : {&above[column - 1], &above[column], &below[column - 1], &below[column]}) {
            window.mFirst += block->mFirst & km_SumMask;
            window.mSecond += block->mSecond & km_SumMask;
            window.mFirstSquares += block->mFirst >> km_SquaresShift;
            window.mSecondSquares += block->mSecond >> km_SquaresShift;
            window.mProducts += block->mProducts;
        }
        bool hasContrast = false;
        const double ssim = WindowSsim(window, hasContrast);
        row.mSsim += ssim;
        if (hasContrast) {
            row.mContrastSsim += ssim;
            ++row.mContrastWindows;
        }
    }
    mWindowRows[inWindowRow] = row;
}

double PvLookMeter::WindowSsim(const Window& inSums, bool& outHasContrast) {
    constexpr double km_Scale = 1.0 / km_WindowPixels;
    const double meanFirst = inSums.mFirst * km_Scale;
    const double meanSecond = inSums.mSecond * km_Scale;
    const double varianceFirst = inSums.mFirstSquares * km_Scale - meanFirst * meanFirst;
    const double varianceSecond = inSums.mSecondSquares * km_Scale - meanSecond * meanSecond;
    const double covariance = inSums.mProducts * km_Scale - meanFirst * meanSecond;
    outHasContrast = std::max(varianceFirst, varianceSecond) >= km_ContrastVariance;
    if (inSums.mFirst == inSums.mSecond && inSums.mFirstSquares == inSums.mProducts &&
        inSums.mSecondSquares == inSums.mProducts)
        return 1.0; // the same pixels, in nearly all windows of most animations
    return ((2 * meanFirst * meanSecond + km_C1) * (2 * covariance + km_C2)) /
           ((meanFirst * meanFirst + meanSecond * meanSecond + km_C1) *
            (varianceFirst + varianceSecond + km_C2));
}
