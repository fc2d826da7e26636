#include "win/pvlzwestimate.h"

#include <algorithm>

#include "nvcode2/nvgiffile.h"
#include "nvcode2/nvgifframe.h"
#include "nvcode2/nvinterlace.h"

namespace {

constexpr std::uint32_t km_MaxCodeSize = 12; // bits
constexpr std::uint32_t km_NoPrefix = UINT32_MAX;

/** Counts the bits of a code stream. A code takes the width that was in force when the one before it was
 * written, since decoders learn of each string one code late. */
class BitCounter {
public:
    explicit BitCounter(std::uint32_t inPixelBits)
        : mInitialSize(inPixelBits + 1), mFirstFreeCode((1U << inPixelBits) + 2) {
        Reset();
        mLaggedSize = mCodeSize;
    }

    void Emit() {
        mBits += mLaggedSize;
        mLaggedSize = mCodeSize;
    }

    std::uint32_t TakeCode() { return mNextCode++; }

    /** After a code was taken and emitted. @return true when the table is full and has to be cleared */
    bool Grow() {
        if (mNextCode != 1U << mCodeSize)
            return false;
        if (mCodeSize == km_MaxCodeSize)
            return true;
        ++mCodeSize;
        return false;
    }

    void Reset() {
        mCodeSize = mInitialSize;
        mNextCode = mFirstFreeCode;
    }

    std::uint64_t Bits() const { return mBits; }

private:
    std::uint32_t mInitialSize;
    std::uint32_t mFirstFreeCode;
    std::uint32_t mCodeSize = 0;
    std::uint32_t mLaggedSize = 0;
    std::uint32_t mNextCode = 0;
    std::uint64_t mBits = 0;
};

} // namespace

std::uint64_t PvLZWEstimator::EstimateLZWSize(const std::uint8_t* inPixels, std::uint32_t inWidth,
                                              std::uint32_t inHeight, std::uint32_t inStride,
                                              std::uint32_t inColorCount, bool inInterlaced) {
    const std::uint32_t pixelBits = std::max<std::uint32_t>(NvGIFMinimumCodeSize(inColorCount), 2);
    BitCounter counter(pixelBits);
    mTable.Begin(pixelBits);
    counter.Emit(); // the first clear code
    std::uint32_t prefix = km_NoPrefix;
    NvForEachRowInFileOrder(inHeight, inInterlaced, [&](std::uint32_t y) {
        const std::uint8_t* row = inPixels + std::size_t{y} * inStride;
        std::uint32_t x = 0;
        if (prefix == km_NoPrefix && inWidth > 0)
            x = mTable.FindRun(row, inWidth, prefix);
        while (x < inWidth) {
            const std::uint32_t pixel = row[x];
            if (const std::uint32_t code = mTable.Find(prefix, pixel)) {
                prefix = code;
                ++x;
                continue;
            }
            mTable.Add(prefix, pixel, counter.TakeCode());
            counter.Emit();
            if (counter.Grow()) {
                mTable.Clear();
                counter.Reset();
                counter.Emit(); // a clear code
            }
            x += mTable.FindRun(row + x, inWidth - x, prefix);
        }
    });
    if (prefix != km_NoPrefix)
        counter.Emit();
    counter.Emit(); // the end code
    return counter.Bits();
}

std::uint64_t PvLZWEstimator::EstimateFrame(const NvGIFFrame& inFrame) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvConstPixelLock pixels(image);
    return EstimateLZWSize(pixels.Row(0), image.GetWidth(), image.GetHeight(), image.GetRowBytes(),
                           image.GetColorTable().GetSize(), inFrame.GetInfo().mInterlaced != 0);
}
