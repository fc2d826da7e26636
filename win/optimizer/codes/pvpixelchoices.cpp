#include "win/optimizer/codes/pvpixelchoices.h"

#include <algorithm>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvinterlace.h"

namespace {

/** What a row may draw instead. */
void CollectRow(const std::uint8_t* inPresent, std::uint32_t inWidth, std::uint8_t inTransparent,
                const PvFillCanvas::Pixel* inCanvas, std::uint32_t inEnd, std::uint8_t* outOther) {
    for (std::uint32_t x = 0; x < inWidth; ++x) {
        const bool hasChoice = inPresent[x] == inTransparent && inCanvas[x] < inEnd;
        outOther[x] = hasChoice ? static_cast<std::uint8_t>(inCanvas[x]) : inPresent[x];
    }
}

/** The same where pixels that are drawn for nothing may stay undrawn. */
void AddNeedless(const std::uint8_t* inPresent, std::uint32_t inWidth, std::uint8_t inTransparent,
                 const PvFillCanvas::Pixel* inCanvas, std::uint8_t* ioOther) {
    for (std::uint32_t x = 0; x < inWidth; ++x)
        ioOther[x] = inPresent[x] == inCanvas[x] ? inTransparent : ioOther[x];
}

} // namespace

void PvCollectPresent(const NvGIFFrame& inFrame, PvPixelChoices& outChoices) {
    const NvIndexedImage& image = inFrame.GetImage();
    const std::uint32_t width = image.GetWidth();
    outChoices.mPixelBits = std::max(NvColorTable::GetBitsNeeded(image.GetHighestIndex() + 1U), 2U);
    outChoices.mPresent.resize(std::size_t{width} * image.GetHeight());
    std::uint8_t* next = outChoices.mPresent.data();
    const NvConstPixelLock pixels(image);
    NvForEachRowInFileOrder(image.GetHeight(), inFrame.GetInfo().mInterlaced != 0,
                            [&](std::uint32_t y) { next = std::copy_n(pixels.Row(y), width, next); });
}

bool PvCollectOthers(const NvGIFFrame& inFrame, const PvFillCanvas& inCanvas, PvChoice inChoice,
                     PvPixelChoices& ioChoices) {
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const std::uint32_t width = inFrame.GetWidth();
    const std::uint32_t end = 1U << ioChoices.mPixelBits;
    ioChoices.mOther.resize(ioChoices.mPresent.size());
    std::size_t next = 0;
    NvForEachRowInFileOrder(inFrame.GetHeight(), info.mInterlaced != 0, [&](std::uint32_t y) {
        const std::uint8_t* present = ioChoices.mPresent.data() + next;
        const PvFillCanvas::Pixel* canvas = inCanvas.Row(info.mTop + y) + info.mLeft;
        std::uint8_t* other = ioChoices.mOther.data() + next;
        CollectRow(present, width, info.mTransparentIndex, canvas, end, other);
        if (inChoice == PvChoice::km_Shown)
            AddNeedless(present, width, info.mTransparentIndex, canvas, other);
        next += width;
    });
    return ioChoices.mOther != ioChoices.mPresent;
}

void PvStorePixels(NvGIFFrame& ioFrame, const std::vector<std::uint8_t>& inPixels) {
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
