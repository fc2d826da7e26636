#include "win/optimizer/codes/pvfill.h"

#include <algorithm>
#include <cstdint>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvinterlace.h"

namespace {

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

/** What a row may draw instead. */
void CollectRow(const std::uint8_t* inPresent, std::uint32_t inWidth, std::uint8_t inTransparent,
                const PvFillCanvas::Pixel* inCanvas, std::uint32_t inEnd, std::uint8_t* outOther) {
    for (std::uint32_t x = 0; x < inWidth; ++x) {
        const bool hasChoice = inPresent[x] == inTransparent && inCanvas[x] < inEnd;
        outOther[x] = hasChoice ? static_cast<std::uint8_t>(inCanvas[x]) : inPresent[x];
    }
}

/** What it may draw instead, in colours that codes of as many bits hold; CollectPresent comes first.
 *  @return whether any pixel has a choice */
bool CollectOthers(const NvGIFFrame& inFrame, const PvFillCanvas& inCanvas, PvPixelChoices& ioChoices) {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const std::uint32_t width = inFrame.GetWidth();
    const std::uint32_t end = 1U << ioChoices.mPixelBits;
    ioChoices.mOther.resize(ioChoices.mPresent.size());
    std::size_t next = 0;
    NvForEachRowInFileOrder(inFrame.GetHeight(), info.mInterlaced != 0, [&](std::uint32_t y) {
        CollectRow(ioChoices.mPresent.data() + next, width, info.mTransparentIndex,
                   inCanvas.Row(info.mTop + y) + info.mLeft, end, ioChoices.mOther.data() + next);
        next += width;
    });
    return ioChoices.mOther != ioChoices.mPresent;
}

/** Stores the settled pixels. Those that no longer have the transparent index are drawn from now on. */
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
    ioFrame.UpdateMask(); // by which exchanged pixels are judged
}

} // namespace

void PvUndrawnFiller::FillUndrawnPixels(NvGIFFrame& ioFrame, std::uint64_t inKnownCodes) {
    mCanvas.Prepare(ioFrame);
    if (ioFrame.HasTransparency()) {
        CollectPresent(ioFrame, mChoices);
        if (mChooser.Begin(mChoices.mPresent, mChoices.mPixelBits, inKnownCodes) &&
            CollectOthers(ioFrame, mCanvas, mChoices))
            if (const PvFillChooser::Pixels* better = mChooser.Choose(mChoices))
                StorePixels(ioFrame, *better);
    }
    mCanvas.Draw(ioFrame);
}
