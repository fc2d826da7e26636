#include "win/pvfill.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvgifplayer.h"
#include "nvcode2/nvinterlace.h"
#include "nvcode2/nvlzwstringtable.h"
#include "win/pvprogress.h"

namespace {

using Pixels = std::vector<std::uint8_t>;

/** A frame's pixels in the order in which the file stores them, each with what it may be instead. */
struct PixelChoices {
    Pixels mPresent;
    Pixels mOther;                // equal to mPresent where there is no choice
    std::uint32_t mPixelBits = 2; // of the frame's codes
};

/** The entry of a colour table that has exactly a given colour. */
class ColourLookup {
public:
    /** @param inEnd  entries from there on are not used */
    ColourLookup(const NvColorTable& inTable, std::uint32_t inEnd) {
        mSlots.fill({0, 0});
        for (std::uint32_t i = std::min(inEnd, inTable.GetSize()); i-- > 0;)
            Insert(NvPackColor(inTable.GetColor(i)) | NvGIFPlayer::km_Covered, static_cast<std::uint8_t>(i));
    }

    /** @return whether a covered canvas pixel's colour is in the table */
    bool Find(NvGIFPlayer::Pixel inPixel, std::uint8_t& outIndex) const {
        for (std::uint32_t slot = Hash(inPixel); mSlots[slot].mPixel != 0; slot = (slot + 1) % km_Slots)
            if (mSlots[slot].mPixel == inPixel) {
                outIndex = mSlots[slot].mIndex;
                return true;
            }
        return false;
    }

private:
    static constexpr std::uint32_t km_Slots = 1024; // 2 to the power of the bits that Hash leaves
    struct Slot {
        NvGIFPlayer::Pixel mPixel; // 0: free
        std::uint8_t mIndex;
    };

    static std::uint32_t Hash(NvGIFPlayer::Pixel inPixel) { return (inPixel * 2654435761U) >> 22; }

    void Insert(NvGIFPlayer::Pixel inPixel, std::uint8_t inIndex) {
        std::uint32_t slot = Hash(inPixel);
        while (mSlots[slot].mPixel != 0 && mSlots[slot].mPixel != inPixel)
            slot = (slot + 1) % km_Slots;
        mSlots[slot] = {inPixel, inIndex};
    }

    std::array<Slot, km_Slots> mSlots;
};

/** Codes that LZW needs for a stream of pixels: the fewer, the shorter the data, whatever their widths. Stops
 * counting when they are as many as another choice needs. */
std::uint64_t CountCodes(const Pixels& inPixels, std::uint32_t inPixelBits, std::uint64_t inToBeat,
                         NvLZWStringTable& ioTable) {
    const std::uint32_t firstFreeCode = (1U << inPixelBits) + 2;
    ioTable.Begin(inPixelBits);
    std::uint32_t nextCode = firstFreeCode;
    std::uint64_t codes = 1;
    std::uint32_t prefix = inPixels[0];
    for (std::size_t i = 1; i < inPixels.size() && codes < inToBeat; ++i) {
        const std::uint32_t pixel = inPixels[i];
        if (const std::uint32_t code = ioTable.Find(prefix, pixel)) {
            prefix = code;
            continue;
        }
        ioTable.Add(prefix, pixel, nextCode++);
        ++codes;
        if (nextCode == NvLZWStringTable::km_MaxCodes) {
            ioTable.Clear();
            nextCode = firstFreeCode;
        }
        prefix = pixel;
    }
    return codes;
}

/** Parses a stream of choices into the longest strings the table knows, and settles each pixel on the way.
 *
 *  At every place all strings that the choices allow are followed at once, up to a number. Where none goes
 * on, the longest is taken; the next pixel is settled so that the string after it becomes long too. */
class GreedyParser {
public:
    GreedyParser(const PixelChoices& inChoices, NvLZWStringTable& ioTable)
        : mChoices(inChoices), mTable(ioTable) {}

    /** @param outPixels  the settled pixels, as many as the choices
     *  @return           the number of codes; the pixels are not all settled when that is inToBeat */
    std::uint64_t Parse(std::uint64_t inToBeat, Pixels& outPixels) {
        const std::size_t count = mChoices.mPresent.size();
        const std::uint32_t firstFreeCode = (1U << mChoices.mPixelBits) + 2;
        outPixels = mChoices.mPresent;
        mTable.Begin(mChoices.mPixelBits);
        std::uint32_t nextCode = firstFreeCode;
        std::uint64_t codes = 1;
        std::size_t start = 0;
        Explore(start, mChoices.mPresent[0], mChoices.mOther[0], mBest);
        while (codes < inToBeat) {
            const Step& last = mBest.mSteps[mBest.mLongest];
            SettleString(start, outPixels);
            start += mBest.mLength;
            if (start == count)
                break;
            ++codes;
            const std::uint32_t prefix = last.mNode;
            const std::uint8_t pixel = ChooseNext(prefix, start, nextCode);
            mTable.Add(prefix, pixel, nextCode++);
            if (nextCode == NvLZWStringTable::km_MaxCodes) {
                mTable.Clear();
                nextCode = firstFreeCode;
                Explore(start, pixel, pixel, mBest);
            }
        }
        return codes;
    }

private:
    // More find hardly anything; two alone lose half a percent.
    static constexpr std::size_t km_StringsFollowed = 8;

    struct Step {
        std::uint32_t mNode;   // code of the string up to here
        std::uint32_t mParent; // the step before, in the same list
        std::uint8_t mPixel;
    };

    /** All strings from one place, and the longest of them. */
    struct Exploration {
        std::vector<Step> mSteps;
        std::uint32_t mLongest = 0; // its last step
        std::size_t mLength = 0;    // pixels
    };

    /** Follows every string that starts with one of two pixels. */
    void Explore(std::size_t inStart, std::uint8_t inFirst, std::uint8_t inSecond,
                 Exploration& outFound) const {
        std::vector<Step>& steps = outFound.mSteps;
        steps.clear();
        steps.push_back({inFirst, 0, inFirst});
        if (inSecond != inFirst)
            steps.push_back({inSecond, 0, inSecond});
        std::size_t begin = 0; // of the strings of the length reached
        std::size_t place = inStart + 1;
        for (; place < mChoices.mPresent.size(); ++place) {
            const std::size_t end = steps.size();
            for (std::size_t i = begin; i < end && steps.size() - end < km_StringsFollowed; ++i)
                ExtendString(i, place, steps);
            if (steps.size() == end)
                break;
            begin = end;
        }
        outFound.mLongest = static_cast<std::uint32_t>(begin);
        outFound.mLength = place - inStart;
    }

    void ExtendString(std::size_t inStep, std::size_t inPlace, std::vector<Step>& ioSteps) const {
        const std::uint32_t node = ioSteps[inStep].mNode;
        const std::uint8_t present = mChoices.mPresent[inPlace];
        const std::uint8_t other = mChoices.mOther[inPlace];
        if (const std::uint32_t code = mTable.Find(node, present))
            ioSteps.push_back({code, static_cast<std::uint32_t>(inStep), present});
        if (other == present)
            return;
        if (const std::uint32_t code = mTable.Find(node, other))
            ioSteps.push_back({code, static_cast<std::uint32_t>(inStep), other});
    }

    // The string about to be added may be the very one that the next needs, as in every run, so it is in the
    // table while each choice of its last pixel is tried.
    std::uint8_t ChooseNext(std::uint32_t inPrefix, std::size_t inPlace, std::uint32_t inCode) {
        const std::uint8_t present = mChoices.mPresent[inPlace];
        const std::uint8_t other = mChoices.mOther[inPlace];
        ExploreWith(inPrefix, present, inPlace, inCode, mBest);
        if (other == present)
            return present;
        ExploreWith(inPrefix, other, inPlace, inCode, mOther);
        if (mOther.mLength <= mBest.mLength)
            return present;
        std::swap(mBest, mOther);
        return other;
    }

    void ExploreWith(std::uint32_t inPrefix, std::uint8_t inPixel, std::size_t inPlace, std::uint32_t inCode,
                     Exploration& outFound) {
        mTable.Add(inPrefix, inPixel, inCode);
        Explore(inPlace, inPixel, inPixel, outFound);
        mTable.RemoveLast();
    }

    void SettleString(std::size_t inStart, Pixels& outPixels) const {
        std::uint32_t step = mBest.mLongest;
        for (std::size_t i = mBest.mLength; i-- > 0; step = mBest.mSteps[step].mParent)
            outPixels[inStart + i] = mBest.mSteps[step].mPixel;
    }

    const PixelChoices& mChoices;
    NvLZWStringTable& mTable;
    Exploration mBest;
    Exploration mOther;
};

/** Takes the other choice in every run of at most a number of pixels that have one. */
void FillShortRuns(const PixelChoices& inChoices, std::size_t inLongest, Pixels& outPixels) {
    const std::size_t count = inChoices.mPresent.size();
    const auto hasChoice = [&](std::size_t inPlace) {
        return inChoices.mOther[inPlace] != inChoices.mPresent[inPlace];
    };
    outPixels = inChoices.mPresent;
    for (std::size_t begin = 0; begin < count;) {
        std::size_t end = begin;
        while (end < count && hasChoice(end))
            ++end;
        if (end - begin <= inLongest)
            std::copy(inChoices.mOther.begin() + static_cast<std::ptrdiff_t>(begin),
                      inChoices.mOther.begin() + static_cast<std::ptrdiff_t>(end),
                      outPixels.begin() + static_cast<std::ptrdiff_t>(begin));
        begin = std::max(end, begin + 1);
    }
}

/** Finds the choices that need the fewest codes among a few. */
class FillChooser {
public:
    /** @return  the pixels, valid until the next call; null when nothing beats the present ones */
    const Pixels* Choose(const PixelChoices& inChoices) {
        mFewest = CountCodes(inChoices.mPresent, inChoices.mPixelBits, UINT64_MAX, mTable);
        mHasBetter = false;
        Consider(inChoices.mOther, inChoices.mPixelBits);
        for (const std::size_t longest : {std::size_t{4}, std::size_t{16}, std::size_t{64}}) {
            FillShortRuns(inChoices, longest, mTried);
            Consider(mTried, inChoices.mPixelBits);
        }
        Keep(GreedyParser(inChoices, mTable).Parse(mFewest, mTried), mTried);
        return mHasBetter ? &mBest : nullptr;
    }

private:
    void Consider(const Pixels& inPixels, std::uint32_t inPixelBits) {
        Keep(CountCodes(inPixels, inPixelBits, mFewest, mTable), inPixels);
    }

    void Keep(std::uint64_t inCodes, const Pixels& inPixels) {
        if (inCodes >= mFewest)
            return;
        mFewest = inCodes;
        mBest = inPixels;
        mHasBetter = true;
    }

    NvLZWStringTable mTable;
    std::uint64_t mFewest = 0; // codes
    bool mHasBetter = false;
    Pixels mBest;
    Pixels mTried;
};

/** One past the highest index of a frame's pixels, the undrawn ones included. */
std::uint32_t IndexEnd(const NvIndexedImage& inImage) {
    std::array<std::uint32_t, 256> histogram{};
    inImage.BuildHistogram(histogram.data());
    std::uint32_t end = inImage.GetColorTable().GetSize();
    while (end > 1 && histogram[end - 1] == 0)
        --end;
    return end;
}

/** @return whether any pixel has a choice */
bool CollectChoices(const NvGIFFrame& inFrame, const NvGIFPlayer& inCanvas, PixelChoices& outChoices) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const std::uint32_t width = image.GetWidth();
    outChoices.mPixelBits = std::max(NvColorTable::GetBitsNeeded(IndexEnd(image)), 2U);
    const ColourLookup lookup(image.GetColorTable(), 1U << outChoices.mPixelBits);
    outChoices.mPresent.clear();
    outChoices.mOther.clear();
    bool anyChoice = false;
    const NvConstPixelLock pixels(image);
    const NvConstPixelLock mask(inFrame.GetMask());
    NvForEachRowInFileOrder(image.GetHeight(), info.mInterlaced != 0, [&](std::uint32_t y) {
        const std::uint8_t* row = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        const NvGIFPlayer::Pixel* canvas = inCanvas.Row(info.mTop + y) + info.mLeft;
        outChoices.mPresent.insert(outChoices.mPresent.end(), row, row + width);
        for (std::uint32_t x = 0; x < width; ++x) {
            std::uint8_t other = row[x];
            if (!(bits[x / 8] & (0x80U >> x % 8)) && canvas[x] != 0 && lookup.Find(canvas[x], other))
                anyChoice = true;
            outChoices.mOther.push_back(other);
        }
    });
    return anyChoice;
}

/** Stores the settled pixels; those that are no longer the transparent index are drawn from now on. */
void StorePixels(NvGIFFrame& ioFrame, const Pixels& inPixels) {
    const std::uint32_t width = ioFrame.GetWidth();
    const std::uint8_t transparent = ioFrame.GetTransparentIndex();
    {
        const NvPixelLock pixels(ioFrame.GetImage());
        const NvPixelLock mask(ioFrame.GetMask());
        const std::uint8_t* next = inPixels.data();
        NvForEachRowInFileOrder(
            ioFrame.GetHeight(), ioFrame.GetInfo().mInterlaced != 0, [&](std::uint32_t y) {
                std::copy_n(next, width, pixels.Row(y));
                for (std::uint32_t x = 0; x < width; ++x)
                    if (next[x] != transparent)
                        NvBitmapImage::SetBit(mask.Row(y), ioFrame.GetMask().GetRowBytes(), x, 0, 1);
                next += width;
            });
    }
    ioFrame.GetInfo().mHasTransparency = ioFrame.IsFullyDrawn() ? 0 : 1;
}

} // namespace

void FillUndrawnPixels(NvAnimation& ioAnimation, PvProgress& ioProgress) {
    NvGIFPlayer canvas(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight());
    FillChooser chooser;
    PixelChoices choices;
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, ioAnimation.GetFrameCount());
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        canvas.DisposeOfLastFrame();
        if (frame.HasTransparency() && CollectChoices(frame, canvas, choices))
            if (const Pixels* better = chooser.Choose(choices))
                StorePixels(frame, *better);
        canvas.ShowFrame(frame);
    }
}
