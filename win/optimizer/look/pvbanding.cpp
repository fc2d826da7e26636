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

/** One row or column of a frame, in its own pixels and in the other ones. */
class Line {
public:
    explicit Line(std::size_t inLength) : mPixels(inLength) {}

    void Set(std::size_t inAt, const NvColor& inOwn, const NvColor& inOther, bool inIsDrawn) {
        mPixels[inAt] = {inOwn, inOther, inIsDrawn};
    }

    /** Sum over the pixels of the excess of their bands. */
    std::uint64_t SumExcess() const {
        std::uint64_t sum = 0;
        Band last;
        for (std::size_t begin = 0; begin < mPixels.size(); begin += last.mLength) {
            Band band{EndOfBand(begin) - begin, 0};
            if (std::min(band.mLength, last.mLength) >= km_ShortestBand)
                band.mExcess = ExcessAt(begin);
            sum += last.mLength * static_cast<std::uint64_t>(std::max(last.mExcess, band.mExcess));
            last = band;
        }
        return sum + last.mLength * static_cast<std::uint64_t>(last.mExcess);
    }

private:
    struct Pixel {
        NvColor mOwn;
        NvColor mOther;
        bool mIsDrawn = false;
    };
    struct Band {
        std::size_t mLength = 0; // pixels
        int mExcess = 0;         // levels, of the step at its beginning
    };

    std::size_t EndOfBand(std::size_t inBegin) const {
        std::size_t end = inBegin + 1;
        while (end < mPixels.size() && mPixels[end].mOther == mPixels[inBegin].mOther)
            ++end;
        return end;
    }

    /** By how much the step ahead of a pixel exceeds the frame's own; 0 when that is not seen. */
    int ExcessAt(std::size_t inAt) const {
        const int own = StepBetween(mPixels[inAt - 1].mOwn, mPixels[inAt].mOwn);
        const int excess = StepBetween(mPixels[inAt - 1].mOther, mPixels[inAt].mOther) - own;
        return excess >= km_LeastExcess && IsSoftAround(inAt) ? excess : 0;
    }

    bool IsSoftAround(std::size_t inAt) const {
        const std::size_t first = inAt - km_ShortestBand;
        for (std::size_t i = first; i < inAt + km_ShortestBand; ++i)
            if (!mPixels[i].mIsDrawn ||
                (i > first && StepBetween(mPixels[i - 1].mOwn, mPixels[i].mOwn) > km_SoftStep))
                return false;
        return true;
    }

    std::vector<Pixel> mPixels;
};

/** Reads a frame and the other pixels for it, line by line. */
class LineReader {
public:
    LineReader(const NvGIFFrame& inFrame, const NvIndexedImage& inOther)
        : mFrame(inFrame),
          mOther(inOther),
          mOwnPixels(inFrame.GetImage()),
          mOtherPixels(inOther),
          mMask(inFrame.GetMask()) {}

    std::uint64_t SumRows() const {
        Line line(mFrame.GetWidth());
        std::uint64_t sum = 0;
        for (std::uint32_t y = 0; y < mFrame.GetHeight(); ++y) {
            for (std::uint32_t x = 0; x < mFrame.GetWidth(); ++x)
                Read(x, y, line, x);
            sum += line.SumExcess();
        }
        return sum;
    }

    std::uint64_t SumColumns() const {
        Line line(mFrame.GetHeight());
        std::uint64_t sum = 0;
        for (std::uint32_t x = 0; x < mFrame.GetWidth(); ++x) {
            for (std::uint32_t y = 0; y < mFrame.GetHeight(); ++y)
                Read(x, y, line, y);
            sum += line.SumExcess();
        }
        return sum;
    }

private:
    void Read(std::uint32_t inX, std::uint32_t inY, Line& ioLine, std::uint32_t inAt) const {
        const NvColorTable& own = mFrame.GetImage().GetColorTable();
        const NvColorTable& other = mOther.GetColorTable();
        const bool isDrawn =
            NvBitmapImage::GetBit(mMask.Row(inY), mFrame.GetMask().GetRowBytes(), inX, 0) != 0;
        ioLine.Set(inAt, own.GetColors()[mOwnPixels.Row(inY)[inX]],
                   other.GetColors()[mOtherPixels.Row(inY)[inX]], isDrawn);
    }

    const NvGIFFrame& mFrame;
    const NvIndexedImage& mOther;
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
