#include "nvcode2/image/nvresize.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/image/nvmakeinvcolormap.h"

namespace {

using Byte = std::uint8_t;

bool IsEmpty(const NvConstPixelBlock& inPixels) {
    return inPixels.width == 0 || inPixels.height == 0;
}

/** The input pixels from start to stop - 1 that one output pixel covers along an axis, and how much of the
 *  first, the last and those between, in the axis's units. A single pixel is the first. */
struct Span {
    std::uint32_t start, stop;
    std::uint64_t first, between, last;
};

class Axis {
public:
    Axis(std::uint32_t inSize, std::uint32_t inOutSize)
        : mInUnits(inOutSize / std::gcd(inSize, inOutSize)),
          mOutUnits(inSize / std::gcd(inSize, inOutSize)) {}

    /** The length of an output pixel: the weights of any span add up to it. */
    std::uint64_t GetOutUnits() const { return mOutUnits; }

    Span GetSpan(std::uint32_t inOutPixel) const {
        const std::uint64_t begin = inOutPixel * mOutUnits;
        const std::uint64_t end = begin + mOutUnits;
        const std::uint64_t start = begin / mInUnits;
        const std::uint64_t stop = (end + mInUnits - 1) / mInUnits;
        return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(stop),
                std::min(end, (start + 1) * mInUnits) - begin, mInUnits, end - (stop - 1) * mInUnits};
    }

private:
    std::uint64_t mInUnits;  // length of an input pixel
    std::uint64_t mOutUnits; // length of an output pixel
};

/** Pixels that hold their channels. */
struct DirectPixels {
    NvConstPixelBlock block;

    const Byte* At(const Byte* inRow, std::size_t inColumn) const {
        return inRow + inColumn * block.channels;
    }
};

/** Pixels that are indices of a table. */
struct IndexedPixels {
    NvConstPixelBlock block;
    std::array<std::array<Byte, 3>, 256> colors;

    const Byte* At(const Byte* inRow, std::size_t inColumn) const { return colors[inRow[inColumn]].data(); }
};

// Output columns worked on at a time: their sums stay in the cache.
constexpr std::uint32_t km_StripWidth = 128;

/** Resamples one strip of output columns. Channels is the number of them averaged. */
template <std::size_t Channels, typename Pixels>
class Strip {
public:
    using Sums = std::array<std::uint64_t, Channels>;
    using Pixel = std::array<Byte, Channels>;

    Strip(const Pixels& inPixels, const Axis& inColumns, const Axis& inRows, std::uint32_t inFirst,
          std::uint32_t inCount)
        : mPixels(inPixels), mCount(inCount), mArea(inColumns.GetOutUnits() * inRows.GetOutUnits()) {
        for (std::uint32_t x = 0; x < inCount; ++x) {
            mSpans[x] = inColumns.GetSpan(inFirst + x);
            const std::uint32_t jStart = mSpans[x].start;
            const std::uint32_t jStop = mSpans[x].stop;
            const std::uint32_t inWidth = inPixels.block.width;
            NvAssert(jStart < inWidth);
            NvAssert(jStop <= inWidth);
        }
    }

    /** One row of mCount output pixels, valid until the next call. */
    const Pixel* GetRow(const Span& inRows) {
        // enlarged rows inside one input row are all alike
        const bool isSingle = inRows.stop - inRows.start == 1;
        if (isSingle && inRows.start == mLastSingle)
            return mResult.data();
        mLastSingle = isSingle ? inRows.start : km_NoRow;

        std::fill_n(mSums.begin(), mCount, Sums{});
        for (std::uint32_t y = inRows.start; y < inRows.stop; ++y) {
            const bool isLast = y + 1 == inRows.stop;
            AddRow(mPixels.block.data + std::size_t{y} * mPixels.block.rowBytes,
                   y == inRows.start ? inRows.first : (isLast ? inRows.last : inRows.between));
        }
        for (std::uint32_t x = 0; x < mCount; ++x) {
            for (std::size_t c = 0; c < Channels; ++c)
                mResult[x][c] = static_cast<Byte>((mSums[x][c] + mArea / 2) / mArea);
        }
        return mResult.data();
    }

private:
    static constexpr std::uint32_t km_NoRow = 0xFFFFFFFF;

    void AddRow(const Byte* inRow, std::uint64_t inWeight) {
        for (std::uint32_t x = 0; x < mCount; ++x) {
            const Span& span = mSpans[x];
            Sums sums{};
            for (std::size_t j = span.start + 1; j + 1 < span.stop; ++j)
                Add(sums, mPixels.At(inRow, j), 1);
            for (std::size_t c = 0; c < Channels; ++c)
                sums[c] *= span.between;
            Add(sums, mPixels.At(inRow, span.start), span.first);
            if (span.stop - span.start > 1)
                Add(sums, mPixels.At(inRow, span.stop - 1), span.last);
            for (std::size_t c = 0; c < Channels; ++c)
                mSums[x][c] += sums[c] * inWeight;
        }
    }

    static void Add(Sums& ioSums, const Byte* inPixel, std::uint64_t inWeight) {
        for (std::size_t c = 0; c < Channels; ++c)
            ioSums[c] += inPixel[c] * inWeight;
    }

    const Pixels& mPixels;
    std::uint32_t mCount; // output columns
    std::uint64_t mArea;  // of an output pixel, what its weights add up to
    std::uint32_t mLastSingle = km_NoRow;
    std::array<Span, km_StripWidth> mSpans;
    std::array<Sums, km_StripWidth> mSums;
    std::array<Pixel, km_StripWidth> mResult;
};

/** Resamples everything; inWrite(output pixel, its channels) stores one. */
template <std::size_t Channels, typename Pixels, typename Write>
void Resample(const Pixels& inPixels, const NvPixelBlock& outPixels, NvProgressIndicator* inIndicator,
              Write inWrite) {
    const std::uint32_t inHeight = inPixels.block.height;
    const std::uint32_t outWidth = outPixels.width;
    const std::uint32_t outHeight = outPixels.height;
    const Axis columns(inPixels.block.width, outWidth);
    const Axis rows(inHeight, outHeight);
    const std::uint32_t strips = (outWidth - 1) / km_StripWidth + 1;
    for (std::uint32_t i = 0; i < strips; ++i) {
        const std::uint32_t first = i * km_StripWidth;
        const std::uint32_t count = std::min(km_StripWidth, outWidth - first);
        Strip<Channels, Pixels> strip(inPixels, columns, rows, first, count);
        for (std::uint32_t y = 0; y < outHeight; ++y) {
            const Span span = rows.GetSpan(y);
            const std::uint32_t iStart = span.start;
            const std::uint32_t iStop = span.stop;
            NvAssert(iStart < inHeight);
            NvAssert(iStop <= inHeight);
            const auto* const pixels = strip.GetRow(span);
            Byte* const row = outPixels.data + std::size_t{y} * outPixels.rowBytes;
            for (std::uint32_t x = 0; x < count; ++x)
                inWrite(row + std::size_t{first + x} * outPixels.channels, pixels[x]);
            NvReportProgress(inIndicator, i * outHeight + y + 1, strips * outHeight);
        }
    }
}

/** Resamples inCalcChannels channels, at most four, of pixels that hold them. */
void ResampleDirect(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                    std::uint32_t inCalcChannels, NvProgressIndicator* inIndicator) {
    const DirectPixels pixels{inPixels};
    const auto write = [](Byte* outPixel, const auto& inPixel) { std::ranges::copy(inPixel, outPixel); };
    switch (inCalcChannels) {
    case 1:
        return Resample<1>(pixels, outPixels, inIndicator, write);
    case 2:
        return Resample<2>(pixels, outPixels, inIndicator, write);
    case 3:
        return Resample<3>(pixels, outPixels, inIndicator, write);
    default:
        return Resample<4>(pixels, outPixels, inIndicator, write);
    }
}

void AssertPixels(const NvConstPixelBlock& inPixels, const NvConstPixelBlock& outPixels) {
    NvAssertText(inPixels.data, "inPixelPtr");
    NvAssertText(outPixels.data, "outPixelPtr");
    NvAssertText(inPixels.rowBytes || IsEmpty(inPixels), "inRowBytes || !(inWidth && inHeight )");
    NvAssertText(outPixels.rowBytes || IsEmpty(outPixels), "outRowBytes || !(outWidth && outHeight )");
}

} // namespace

void NvResizeChannels(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                      std::uint32_t calcChannels, NvProgressIndicator* inIndicator) {
    const std::uint32_t inChannels = inPixels.channels;
    const std::uint32_t outChannels = outPixels.channels;
    AssertPixels(inPixels, outPixels);
    NvAssert(inChannels && outChannels);
    NvAssert(calcChannels <= inChannels && calcChannels <= outChannels);
    if (IsEmpty(inPixels) || IsEmpty(outPixels))
        return;
    for (std::uint32_t channel = 0; channel < calcChannels; channel += 4) {
        NvConstPixelBlock in = inPixels;
        NvPixelBlock out = outPixels;
        in.data += channel;
        out.data += channel;
        ResampleDirect(in, out, std::min(calcChannels - channel, 4u), inIndicator);
    }
}

void NvResizeRGB(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                 NvProgressIndicator* inIndicator) {
    NvAssertText(inPixels.channels >= 3 && outPixels.channels >= 3, "inChannels >= 3 && outChannels >= 3");
    NvResizeChannels(inPixels, outPixels, 3, inIndicator);
}

void NvResizeIndexed(const NvConstPixelBlock& inPixels, const NvPixelBlock& outPixels,
                     const NvColorTable* inTablePtr, const Byte* inInvMap, NvProgressIndicator* inIndicator) {
    AssertPixels(inPixels, outPixels);
    NvAssert(inTablePtr);
    NvAssert(inInvMap);
    if (IsEmpty(inPixels) || IsEmpty(outPixels))
        return;
    IndexedPixels pixels{inPixels, {}};
    for (std::uint32_t i = 0; i < std::min(inTablePtr->GetSize(), 256u); ++i) {
        const NvColor color = inTablePtr->GetColor(i);
        pixels.colors[i] = {color.red, color.green, color.blue};
    }
    Resample<3>(pixels, outPixels, inIndicator, [=](Byte* outIndex, const auto& inPixel) {
        *outIndex = inInvMap[NvInverseColorMapCell({inPixel[0], inPixel[1], inPixel[2]})];
    });
}
