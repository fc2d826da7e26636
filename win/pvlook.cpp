#include "win/pvlook.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::uint32_t km_BlockSize = 4;
constexpr std::uint32_t km_WindowPixels = 64;
constexpr std::uint8_t km_MidGrey = 128; // a single bit

// The usual (0.01 * 255)^2 and (0.03 * 255)^2.
constexpr double km_C1 = 6.5025;
constexpr double km_C2 = 58.5225;

// A window shows something when its luma varies at all beyond rounding; flat ones have no structure to lose.
constexpr double km_ContrastVariance = 2.0;

std::uint32_t BlocksFor(std::uint32_t inPixels) {
    return std::max<std::uint32_t>((inPixels + km_BlockSize - 1) / km_BlockSize, 2);
}

/** Luma of a row, its last pixel repeated up to a whole block; transparent pixels are mid grey. In numbers of
 * 16 bits, of which the processor adds twice as many at a time as of 32. */
void LumaRow(const NvGIFPlayer::Pixel* inPixels, std::uint32_t inWidth, std::uint32_t inPaddedWidth,
             std::uint8_t* outLuma) {
    for (std::uint32_t x = 0; x < inWidth; ++x) {
        const NvGIFPlayer::Pixel pixel = inPixels[x];
        const auto red = static_cast<std::uint16_t>(pixel & 0xFF);
        const auto green = static_cast<std::uint16_t>((pixel >> 8) & 0xFF);
        const auto blue = static_cast<std::uint16_t>((pixel >> 16) & 0xFF);
        const auto sum = static_cast<std::uint16_t>(77 * red + 150 * green + 29 * blue + 128);
        const auto grey = static_cast<std::uint16_t>((~pixel >> 24) & km_MidGrey); // 0 of a covered pixel
        outLuma[x] = static_cast<std::uint8_t>((sum >> 8) | grey);
    }
    std::fill(outLuma + inWidth, outLuma + inPaddedWidth, outLuma[inWidth - 1]);
}

} // namespace

PvLookMeter::PvLookMeter(std::uint32_t inWidth, std::uint32_t inHeight)
    : mWidth(inWidth),
      mHeight(inHeight),
      mBlockColumns(BlocksFor(inWidth)),
      mBlockRows(BlocksFor(inHeight)),
      mBlocks(std::size_t{mBlockColumns} * mBlockRows),
      mWindowRows(mBlockRows - 1),
      mErrors(inHeight),
      mLuma(std::size_t{mBlockColumns} * km_BlockSize * 2 * km_BlockSize),
      mColumns(std::size_t{mBlockColumns} * km_BlockSize * 5) {}

PvFrameLook PvLookMeter::Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    return Measure(inFirst, inSecond, 0, mHeight);
}

PvFrameLook PvLookMeter::Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond, std::uint32_t inTop,
                                 std::uint32_t inBottom) {
    const std::uint32_t top = mHasMeasured ? inTop : 0;
    const std::uint32_t bottom = mHasMeasured ? inBottom : mHeight;
    mHasMeasured = true;
    if (top < bottom) {
        for (std::uint32_t y = top; y < bottom; ++y)
            mErrors[y] = CompareRow(inFirst.Row(y), inSecond.Row(y), mWidth);
        // Blocks below the last row repeat it.
        const std::uint32_t firstBlock = top / km_BlockSize;
        const std::uint32_t lastBlock = bottom == mHeight ? mBlockRows - 1 : (bottom - 1) / km_BlockSize;
        for (std::uint32_t row = firstBlock; row <= lastBlock; ++row)
            SumBlocks(inFirst, inSecond, row);
        const std::uint32_t lastWindow = std::min(lastBlock, mBlockRows - 2);
        for (std::uint32_t row = firstBlock > 0 ? firstBlock - 1 : 0; row <= lastWindow; ++row)
            SumWindows(row);
    }
    return Summarize();
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

    std::uint64_t squares = 0;
    std::uint64_t pixels = 0;
    for (const RowErrors& row : mErrors) {
        squares += row.mSquares;
        pixels += row.mPixels;
        look.mMaxError = std::max(look.mMaxError, row.mMax);
    }
    if (squares > 0) {
        const double meanSquare = static_cast<double>(squares) / (3.0 * static_cast<double>(pixels));
        look.mPsnr = std::min(PvFrameLook::km_MaxPsnr, 10.0 * std::log10(255.0 * 255.0 / meanSquare));
    }
    return look;
}

// Pieces short enough for sums of 32 bits. Where either pixel is not covered all its bits are taken out of
// both; the top byte of covered ones is the same.
PvLookMeter::RowErrors PvLookMeter::CompareRow(const NvGIFPlayer::Pixel* inFirst,
                                               const NvGIFPlayer::Pixel* inSecond, std::uint32_t inWidth) {
    constexpr std::uint32_t km_Piece = 256;
    RowErrors errors;
    std::array<NvGIFPlayer::Pixel, km_Piece> first;
    std::array<NvGIFPlayer::Pixel, km_Piece> second;
    for (std::uint32_t begin = 0; begin < inWidth; begin += km_Piece) {
        const std::uint32_t count = std::min(inWidth - begin, km_Piece);
        std::uint32_t pixels = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t isCovered = (inFirst[begin + i] & inSecond[begin + i]) >> 31;
            first[i] = inFirst[begin + i] & (0U - isCovered);
            second[i] = inSecond[begin + i] & (0U - isCovered);
            pixels += isCovered;
        }
        const auto* a = reinterpret_cast<const std::uint8_t*>(first.data());
        const auto* b = reinterpret_cast<const std::uint8_t*>(second.data());
        std::int32_t squares = 0;
        std::uint8_t max = 0;
        for (std::uint32_t i = 0; i < 4 * count; ++i) {
            const auto difference = static_cast<std::int16_t>(a[i] - b[i]);
            squares += difference * difference;
        }
        for (std::uint32_t i = 0; i < 4 * count; ++i) {
            const auto difference = static_cast<std::uint8_t>(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
            max = difference > max ? difference : max;
        }
        errors.mSquares += static_cast<std::uint32_t>(squares);
        errors.mPixels += pixels;
        errors.mMax = std::max<std::uint32_t>(errors.mMax, max);
    }
    return errors;
}

void PvLookMeter::SumBlocks(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                            std::uint32_t inBlockRow) {
    const std::uint32_t width = mBlockColumns * km_BlockSize;
    for (std::uint32_t i = 0; i < km_BlockSize; ++i) {
        const std::uint32_t y = std::min(inBlockRow * km_BlockSize + i, mHeight - 1);
        LumaRow(inFirst.Row(y), mWidth, width, mLuma.data() + std::size_t{width} * i);
        LumaRow(inSecond.Row(y), mWidth, width, mLuma.data() + std::size_t{width} * (km_BlockSize + i));
    }

    // First down the columns, where neighbours are added side by side, then across each block.
    const auto sumColumns = [&](std::uint32_t inField, auto inValue) {
        const std::size_t row = width;
        const std::uint8_t* a = mLuma.data();
        const std::uint8_t* b = a + row * km_BlockSize;
        std::uint32_t* sums = mColumns.data() + row * inField;
        for (std::size_t x = 0; x < row; ++x)
            sums[x] = inValue(a[x], b[x]) + inValue(a[x + row], b[x + row]) +
                      inValue(a[x + 2 * row], b[x + 2 * row]) + inValue(a[x + 3 * row], b[x + 3 * row]);
    };
    using Value = std::uint32_t;
    sumColumns(0, [](Value inA, Value) { return inA; });
    sumColumns(1, [](Value, Value inB) { return inB; });
    sumColumns(2, [](Value inA, Value) { return inA * inA; });
    sumColumns(3, [](Value, Value inB) { return inB * inB; });
    sumColumns(4, [](Value inA, Value inB) { return inA * inB; });
    const auto acrossBlock = [&](std::uint32_t inField, std::uint32_t inColumn) {
        const std::uint32_t* sums = mColumns.data() + std::size_t{width} * inField + inColumn * km_BlockSize;
        return sums[0] + sums[1] + sums[2] + sums[3];
    };
    Block* blocks = mBlocks.data() + std::size_t{mBlockColumns} * inBlockRow;
    for (std::uint32_t column = 0; column < mBlockColumns; ++column)
        blocks[column] = {acrossBlock(0, column), acrossBlock(1, column), acrossBlock(2, column),
                          acrossBlock(3, column), acrossBlock(4, column)};
}

void PvLookMeter::SumWindows(std::uint32_t inWindowRow) {
    const Block* above = mBlocks.data() + std::size_t{mBlockColumns} * inWindowRow;
    const Block* below = above + mBlockColumns;
    WindowRow row;
    for (std::uint32_t column = 1; column < mBlockColumns; ++column) {
        Block window;
        for (const Block* block : {&above[column - 1], &above[column], &below[column - 1], &below[column]}) {
            window.mFirst += block->mFirst;
            window.mSecond += block->mSecond;
            window.mFirstSquares += block->mFirstSquares;
            window.mSecondSquares += block->mSecondSquares;
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

double PvLookMeter::WindowSsim(const Block& inSums, bool& outHasContrast) {
    constexpr double km_Scale = 1.0 / km_WindowPixels;
    const double meanFirst = inSums.mFirst * km_Scale;
    const double meanSecond = inSums.mSecond * km_Scale;
    const double varianceFirst = inSums.mFirstSquares * km_Scale - meanFirst * meanFirst;
    const double varianceSecond = inSums.mSecondSquares * km_Scale - meanSecond * meanSecond;
    const double covariance = inSums.mProducts * km_Scale - meanFirst * meanSecond;
    outHasContrast = std::max(varianceFirst, varianceSecond) >= km_ContrastVariance;
    return ((2 * meanFirst * meanSecond + km_C1) * (2 * covariance + km_C2)) /
           ((meanFirst * meanFirst + meanSecond * meanSecond + km_C1) *
            (varianceFirst + varianceSecond + km_C2));
}
