#include "win/pvfill.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvbytes.h"
#include "nvcode2/nvgifplayer.h"
#include "nvcode2/nvinterlace.h"
#include "nvcode2/nvmaskrow.h"
#include "win/pvgreedyparser.h"
#include "win/pvlzwparser.h"
#include "win/pvprogress.h"

namespace {

using Pixels = std::vector<std::uint8_t>;

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

/** A stretch of pixels that have a choice. */
struct ChoiceRun {
    std::uint32_t mBegin;
    std::uint32_t mEnd;
};

std::vector<ChoiceRun> FindChoiceRuns(const PvPixelChoices& inChoices) {
    const auto count = static_cast<std::uint32_t>(inChoices.mPresent.size());
    const std::uint8_t* present = inChoices.mPresent.data();
    const std::uint8_t* other = inChoices.mOther.data();
    std::vector<ChoiceRun> runs;
    for (std::uint32_t begin = 0; begin < count;) {
        if (begin + 8 <= count && NvLoadLittleEndian(present + begin) == NvLoadLittleEndian(other + begin)) {
            begin += 8;
            continue;
        }
        std::uint32_t end = begin;
        while (end < count && present[end] != other[end])
            ++end;
        if (end > begin)
            runs.push_back({begin, end});
        begin = std::max(end, begin + 1);
    }
    return runs;
}

/** Finds the choices that need the fewest codes among a few. */
class FillChooser {
public:
    /** @return  the pixels, valid until the next call; null when nothing beats the present ones */
    const Pixels* Choose(const PvPixelChoices& inChoices) {
        mParser.Begin(inChoices.mPixelBits);
        mFewest = CountCodes(inChoices.mPresent, UINT64_MAX);
        mHasBetter = false;
        Consider(inChoices.mOther);
        ConsiderShortRuns(inChoices);
        Keep(mGreedyParser.Parse(inChoices, mFewest, mTried), mTried);
        return mHasBetter ? &mBest : nullptr;
    }

private:
    /** Codes that LZW needs for a stream: the fewer, the shorter the data, whatever their widths. */
    std::uint64_t CountCodes(const Pixels& inPixels, std::uint64_t inToBeat) {
        const auto count = static_cast<std::uint32_t>(inPixels.size());
        return mParser.CountMisses(inPixels.data(), count, inToBeat - 1) + 1;
    }

    void Consider(const Pixels& inPixels) { Keep(CountCodes(inPixels, mFewest), inPixels); }

    /** Tries the other choice in every run of at most a number of pixels, for a few such numbers. */
    void ConsiderShortRuns(const PvPixelChoices& inChoices) {
        const std::vector<ChoiceRun> runs = FindChoiceRuns(inChoices);
        mTried = inChoices.mPresent;
        std::uint32_t shortest = 1; // that was not tried yet
        for (const std::uint32_t longest : {4U, 16U, 64U}) {
            bool hasChanged = false;
            for (const ChoiceRun& run : runs) {
                const std::uint32_t length = run.mEnd - run.mBegin;
                if (length < shortest || length > longest)
                    continue;
                std::copy_n(inChoices.mOther.data() + run.mBegin, length, mTried.data() + run.mBegin);
                hasChanged = true;
            }
            if (hasChanged)
                Consider(mTried);
            shortest = longest + 1;
        }
    }

    void Keep(std::uint64_t inCodes, const Pixels& inPixels) {
        if (inCodes >= mFewest)
            return;
        mFewest = inCodes;
        mBest = inPixels;
        mHasBetter = true;
    }

    PvLZWParser mParser;
    PvGreedyParser mGreedyParser;
    std::uint64_t mFewest = 0; // codes
    bool mHasBetter = false;
    Pixels mBest;
    Pixels mTried;
};

/** @return whether any pixel has a choice */
bool CollectChoices(const NvGIFFrame& inFrame, const NvGIFPlayer& inCanvas, PvPixelChoices& outChoices) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const std::uint32_t width = image.GetWidth();
    outChoices.mPixelBits = std::max(NvColorTable::GetBitsNeeded(image.GetHighestIndex() + 1U), 2U);
    const ColourLookup lookup(image.GetColorTable(), 1U << outChoices.mPixelBits);
    outChoices.mPresent.resize(std::size_t{width} * image.GetHeight());
    std::uint8_t* next = outChoices.mPresent.data();
    const NvConstPixelLock pixels(image);
    NvForEachRowInFileOrder(image.GetHeight(), info.mInterlaced != 0,
                            [&](std::uint32_t y) { next = std::copy_n(pixels.Row(y), width, next); });

    outChoices.mOther = outChoices.mPresent;
    next = outChoices.mOther.data();
    bool anyChoice = false;
    const NvConstPixelLock mask(inFrame.GetMask());
    NvForEachRowInFileOrder(image.GetHeight(), info.mInterlaced != 0, [&](std::uint32_t y) {
        const NvGIFPlayer::Pixel* canvas = inCanvas.Row(info.mTop + y) + info.mLeft;
        NvForEachRun(mask.Row(y), width, false, [&](std::uint32_t inFirst, std::uint32_t inEnd) {
            for (std::uint32_t x = inFirst; x < inEnd; ++x)
                if (canvas[x] != 0 && lookup.Find(canvas[x], next[x]))
                    anyChoice = true;
        });
        next += width;
    });
    return anyChoice;
}

/** Stores the settled pixels; those that are no longer the transparent index are drawn from now on. */
void StorePixels(NvGIFFrame& ioFrame, const Pixels& inPixels) {
    const std::uint32_t width = ioFrame.GetWidth();
    {
        const NvPixelLock pixels(ioFrame.GetImage());
        const std::uint8_t* next = inPixels.data();
        NvForEachRowInFileOrder(ioFrame.GetHeight(), ioFrame.GetInfo().mInterlaced != 0,
                                [&](std::uint32_t y) {
                                    std::copy_n(next, width, pixels.Row(y));
                                    next += width;
                                });
    }
    ioFrame.GetMask() = ioFrame.GetImage().MakeMask(ioFrame.GetTransparentIndex());
    ioFrame.GetInfo().mHasTransparency = ioFrame.IsFullyDrawn() ? 0 : 1;
}

} // namespace

void FillUndrawnPixels(NvAnimation& ioAnimation, PvProgress& ioProgress) {
    NvGIFPlayer canvas(ioAnimation.GetScreenWidth(), ioAnimation.GetScreenHeight());
    FillChooser chooser;
    PvPixelChoices choices;
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
