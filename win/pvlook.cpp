#include "win/pvlook.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace {

constexpr std::uint32_t km_BlockSize = 4;
constexpr std::uint32_t km_WindowPixels = 64;
constexpr std::uint8_t km_MidGrey = 128;

// The usual (0.01 * 255)^2 and (0.03 * 255)^2.
constexpr double km_C1 = 6.5025;
constexpr double km_C2 = 58.5225;

// A window shows something when its luma varies at all beyond rounding; flat ones have no structure to lose.
constexpr double km_ContrastVariance = 2.0;

std::uint32_t BlocksFor(std::uint32_t inPixels) {
    return std::max<std::uint32_t>((inPixels + km_BlockSize - 1) / km_BlockSize, 2);
}

std::uint8_t Luma(NvGIFPlayer::Pixel inPixel) {
    const std::uint32_t red = inPixel & 0xFF;
    const std::uint32_t green = (inPixel >> 8) & 0xFF;
    const std::uint32_t blue = (inPixel >> 16) & 0xFF;
    const std::uint32_t luma = (77 * red + 150 * green + 29 * blue + 128) >> 8;
    return inPixel == 0 ? km_MidGrey : static_cast<std::uint8_t>(luma);
}

/** Collects colour differences of the pixels covered in both pictures. */
class ErrorSums {
public:
    void AddRow(const NvGIFPlayer::Pixel* inFirst, const NvGIFPlayer::Pixel* inSecond,
                std::uint32_t inWidth) {
        for (std::uint32_t x = 0; x < inWidth; ++x) {
            if (inFirst[x] == 0 || inSecond[x] == 0)
                continue;
            ++mPixels;
            if (inFirst[x] == inSecond[x])
                continue;
            for (int shift = 0; shift < 24; shift += 8) {
                const int difference = static_cast<int>((inFirst[x] >> shift) & 0xFF) -
                                       static_cast<int>((inSecond[x] >> shift) & 0xFF);
                mSquares += static_cast<std::uint64_t>(difference * difference);
                mMax = std::max(mMax, std::abs(difference));
            }
        }
    }

    std::uint32_t Max() const { return static_cast<std::uint32_t>(mMax); }

    double Psnr() const {
        if (mSquares == 0)
            return PvFrameLook::km_MaxPsnr;
        const double meanSquare = static_cast<double>(mSquares) / (3.0 * static_cast<double>(mPixels));
        return std::min(PvFrameLook::km_MaxPsnr, 10.0 * std::log10(255.0 * 255.0 / meanSquare));
    }

private:
    std::uint64_t mPixels = 0;
    std::uint64_t mSquares = 0;
    int mMax = 0;
};

} // namespace

PvLookMeter::PvLookMeter(std::uint32_t inWidth, std::uint32_t inHeight)
    : mWidth(inWidth),
      mHeight(inHeight),
      mBlockColumns(BlocksFor(inWidth)),
      mBlockRows(BlocksFor(inHeight)),
      mFirstLuma(std::size_t{mBlockColumns} * km_BlockSize),
      mSecondLuma(mFirstLuma.size()) {}

PvFrameLook PvLookMeter::Measure(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond) {
    std::array<BlockRow, 2> rows{BlockRow(mBlockColumns), BlockRow(mBlockColumns)};
    double sum = 0.0;
    double contrastSum = 0.0;
    PvFrameLook look;
    SumBlockRow(inFirst, inSecond, 0, rows[0]);
    for (std::uint32_t row = 1; row < mBlockRows; ++row) {
        SumBlockRow(inFirst, inSecond, row, rows[row % 2]);
        const BlockRow& above = rows[(row - 1) % 2];
        const BlockRow& below = rows[row % 2];
        for (std::uint32_t column = 1; column < mBlockColumns; ++column) {
            Block window;
            for (const Block* block :
                 {&above[column - 1], &above[column], &below[column - 1], &below[column]}) {
                window.mFirst += block->mFirst;
                window.mSecond += block->mSecond;
                window.mFirstSquares += block->mFirstSquares;
                window.mSecondSquares += block->mSecondSquares;
                window.mProducts += block->mProducts;
            }
            bool hasContrast = false;
            const double ssim = WindowSsim(window, hasContrast);
            sum += ssim;
            if (hasContrast) {
                contrastSum += ssim;
                ++look.mContrastWindows;
            }
        }
    }
    look.mSsim = sum / (static_cast<double>(mBlockRows - 1) * static_cast<double>(mBlockColumns - 1));
    if (look.mContrastWindows > 0)
        look.mContrastSsim = contrastSum / look.mContrastWindows;

    ErrorSums errors;
    for (std::uint32_t y = 0; y < mHeight; ++y)
        errors.AddRow(inFirst.Row(y), inSecond.Row(y), mWidth);
    look.mPsnr = errors.Psnr();
    look.mMaxError = errors.Max();
    return look;
}

void PvLookMeter::SumBlockRow(const NvGIFPlayer& inFirst, const NvGIFPlayer& inSecond,
                              std::uint32_t inBlockRow, BlockRow& outBlocks) {
    std::fill(outBlocks.begin(), outBlocks.end(), Block{});
    for (std::uint32_t i = 0; i < km_BlockSize; ++i) {
        const std::uint32_t y = std::min(inBlockRow * km_BlockSize + i, mHeight - 1);
        LumaRow(inFirst.Row(y), mFirstLuma);
        LumaRow(inSecond.Row(y), mSecondLuma);
        const std::uint8_t* first = mFirstLuma.data();
        const std::uint8_t* second = mSecondLuma.data();
        for (Block& block : outBlocks)
            for (std::uint32_t x = 0; x < km_BlockSize; ++x) {
                const std::uint32_t a = *first++;
                const std::uint32_t b = *second++;
                block.mFirst += a;
                block.mSecond += b;
                block.mFirstSquares += a * a;
                block.mSecondSquares += b * b;
                block.mProducts += a * b;
            }
    }
}

void PvLookMeter::LumaRow(const NvGIFPlayer::Pixel* inPixels, std::vector<std::uint8_t>& outLuma) const {
    for (std::uint32_t x = 0; x < mWidth; ++x)
        outLuma[x] = Luma(inPixels[x]);
    std::fill(outLuma.begin() + static_cast<std::ptrdiff_t>(mWidth), outLuma.end(), outLuma[mWidth - 1]);
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
