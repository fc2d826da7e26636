#include "win/pvfill.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "nvcode2/nvanimation.h"
#include "nvcode2/nvgifplayer.h"
#include "nvcode2/nvinterlace.h"
#include "nvcode2/nvmaskrow.h"
#include "win/pvfillchooser.h"
#include "win/pvprogress.h"

namespace {

/** The entry of a colour table that has exactly a given colour. */
class ColourLookup {
public:
    /** @param inEnd          entries from there on are not used
     *  @param inTransparent  nor is this one */
    ColourLookup(const NvColorTable& inTable, std::uint32_t inEnd, std::uint32_t inTransparent) {
        mSlots.fill({0, 0});
        for (std::uint32_t i = std::min(inEnd, inTable.GetSize()); i-- > 0;)
            if (i != inTransparent)
                Insert(NvPackColor(inTable.GetColor(i)) | NvGIFPlayer::km_Covered,
                       static_cast<std::uint8_t>(i));
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

/** What a frame draws, in the order of the file. */
void CollectPresent(const NvGIFFrame& inFrame, PvPixelChoices& outChoices) {
    const NvIndexedImage& image = inFrame.GetImage();
    const std::uint32_t width = image.GetWidth();
    outChoices.mPixelBits = std::max(NvColorTable::GetBitsNeeded(image.GetHighestIndex() + 1U), 2U);
    outChoices.mPresent.resize(std::size_t{width} * image.GetHeight());
    std::uint8_t* next = outChoices.mPresent.data();
    const NvConstPixelLock pixels(image);
    NvForEachRowInFileOrder(image.GetHeight(), inFrame.GetInfo().mInterlaced != 0,
                            [&](std::uint32_t y) { next = std::copy_n(pixels.Row(y), width, next); });
}

/** What it may draw instead; CollectPresent comes first.
 *  @return whether any pixel has a choice */
bool CollectOthers(const NvGIFFrame& inFrame, const NvGIFPlayer& inCanvas, PvPixelChoices& ioChoices) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const std::uint32_t width = image.GetWidth();
    const ColourLookup lookup(image.GetColorTable(), 1U << ioChoices.mPixelBits, info.mTransparentIndex);
    ioChoices.mOther = ioChoices.mPresent;
    std::uint8_t* next = ioChoices.mOther.data();
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
void StorePixels(NvGIFFrame& ioFrame, const PvFillChooser::Pixels& inPixels) {
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
    PvFillChooser chooser;
    PvPixelChoices choices;
    for (std::uint32_t i = 0; i < ioAnimation.GetFrameCount(); ++i) {
        ioProgress.ReportFrame(i, ioAnimation.GetFrameCount());
        NvGIFFrame& frame = ioAnimation.GetFrame(i);
        canvas.DisposeOfLastFrame();
        if (frame.HasTransparency()) {
            CollectPresent(frame, choices);
            if (chooser.Begin(choices.mPresent, choices.mPixelBits) && CollectOthers(frame, canvas, choices))
                if (const PvFillChooser::Pixels* better = chooser.Choose(choices))
                    StorePixels(frame, *better);
        }
        canvas.ShowFrame(frame);
    }
}
