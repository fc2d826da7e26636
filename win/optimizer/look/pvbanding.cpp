#include "win/optimizer/look/pvbanding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "nvcode2/gif/nvgifframe.h"

namespace {

constexpr std::size_t km_ShortestBand = 3; // pixels; shorter runs are texture
constexpr int km_SoftStep = 2;             // levels per channel between neighbours of soft shading, at most
constexpr int km_LeastExcess = 2;          // levels; one more is not seen

/** Largest difference of a channel. */
int StepBetween(const NvColor& inFirst, const NvColor& inSecond) {
    return std::max({std::abs(inFirst.red - inSecond.red), std::abs(inFirst.green - inSecond.green),
                     std::abs(inFirst.blue - inSecond.blue)});
}

/** Reads a frame and other pixels for it, line by line: rows as they lie, columns a few at a time. */
class LineReader {
public:
    LineReader(const NvGIFFrame& inFrame, const NvIndexedImage& inOther)
        : mFrame(inFrame),
          mOwnColours(inFrame.GetImage().GetColorTable().GetColors()),
          mOtherColours(inOther.GetColorTable().GetColors()),
          mOwnPixels(inFrame.GetImage()),
          mOtherPixels(inOther),
          mMask(inFrame.GetMask()) {}

    std::uint64_t SumRows() const {
        std::uint64_t sum = 0;
        for (std::uint32_t y = 0; y < mFrame.GetHeight(); ++y)
            sum += SumExcess({mOwnPixels.Row(y), mOtherPixels.Row(y), mFrame.GetWidth(), 0, y, true});
        return sum;
    }

    std::uint64_t SumColumns() const {
        const std::uint32_t height = mFrame.GetHeight();
        std::vector<std::uint8_t> own(std::size_t{height} * km_ColumnsAtOnce);
        std::vector<std::uint8_t> other(own.size());
        std::uint64_t sum = 0;
        for (std::uint32_t left = 0; left < mFrame.GetWidth(); left += km_ColumnsAtOnce) {
            const std::uint32_t count = std::min(mFrame.GetWidth() - left, km_ColumnsAtOnce);
            for (std::uint32_t y = 0; y < height; ++y)
                for (std::uint32_t i = 0; i < count; ++i) {
                    own[std::size_t{i} * height + y] = mOwnPixels.Row(y)[left + i];
                    other[std::size_t{i} * height + y] = mOtherPixels.Row(y)[left + i];
                }
            for (std::uint32_t i = 0; i < count; ++i) {
                const std::size_t begin = std::size_t{i} * height;
                sum += SumExcess({&own[begin], &other[begin], height, left + i, 0, false});
            }
        }
        return sum;
    }

private:
    static constexpr std::uint32_t km_ColumnsAtOnce = 64; // those of a cache line

    /** A row or column, in the frame's own pixels and in the other ones. */
    struct Line {
        const std::uint8_t* mOwn;
        const std::uint8_t* mOther;
        std::size_t mLength; // pixels
        std::uint32_t mX;    // of the first
        std::uint32_t mY;
        bool mIsRow;
    };

    struct Band {
        std::size_t mLength = 0; // pixels
        int mExcess = 0;         // levels, of the step at its beginning
    };

    /** Sum over the pixels of the excess of their bands. */
    std::uint64_t SumExcess(const Line& inLine) const {
        std::uint64_t sum = 0;
        Band last;
        for (std::size_t begin = 0; begin < inLine.mLength; begin += last.mLength) {
            Band band{EndOfBand(inLine, begin) - begin, 0};
            if (std::min(band.mLength, last.mLength) >= km_ShortestBand)
                band.mExcess = ExcessAt(inLine, begin);
            sum += last.mLength * static_cast<std::uint64_t>(std::max(last.mExcess, band.mExcess));
            last = band;
        }
        return sum + last.mLength * static_cast<std::uint64_t>(last.mExcess);
    }

    std::size_t EndOfBand(const Line& inLine, std::size_t inBegin) const {
        const std::uint8_t first = inLine.mOther[inBegin];
        std::size_t end = inBegin + 1;
        while (end < inLine.mLength &&
               (inLine.mOther[end] == first || mOtherColours[inLine.mOther[end]] == mOtherColours[first]))
            ++end;
        return end;
    }

    /** By how much the step ahead of a pixel exceeds the frame's own; 0 when that is not seen. */
    int ExcessAt(const Line& inLine, std::size_t inAt) const {
        const int excess =
            StepBetween(mOtherColours[inLine.mOther[inAt - 1]], mOtherColours[inLine.mOther[inAt]]) -
            OwnStepAt(inLine, inAt);
        return excess >= km_LeastExcess && IsSoftAround(inLine, inAt) ? excess : 0;
    }

    int OwnStepAt(const Line& inLine, std::size_t inAt) const {
        return StepBetween(mOwnColours[inLine.mOwn[inAt - 1]], mOwnColours[inLine.mOwn[inAt]]);
    }

    bool IsSoftAround(const Line& inLine, std::size_t inAt) const {
        const std::size_t first = inAt - km_ShortestBand;
        for (std::size_t i = first; i < inAt + km_ShortestBand; ++i)
            if (!IsDrawn(inLine, i) || (i > first && OwnStepAt(inLine, i) > km_SoftStep))
                return false;
        return true;
    }

    bool IsDrawn(const Line& inLine, std::size_t inAt) const {
        const auto at = static_cast<std::uint32_t>(inAt);
        const std::uint32_t x = inLine.mX + (inLine.mIsRow ? at : 0);
        const std::uint32_t y = inLine.mY + (inLine.mIsRow ? 0 : at);
        return NvBitmapImage::GetBit(mMask.Row(y), mFrame.GetMask().GetRowBytes(), x, 0) != 0;
    }

    const NvGIFFrame& mFrame;
    const NvColor* mOwnColours;
    const NvColor* mOtherColours;
    NvConstPixelLock mOwnPixels;
    NvConstPixelLock mOtherPixels;
    NvConstPixelLock mMask;
};

} // namespace

double PvBanding(const NvGIFFrame& inFrame, const NvIndexedImage& inOther) {
    const LineReader reader(inFrame, inOther);
    const std::uint64_t excess = std::max(reader.SumRows(), reader.SumColumns());
    return static_cast<double>(excess) / (static_cast<double>(inFrame.GetWidth()) * inFrame.GetHeight());
}
