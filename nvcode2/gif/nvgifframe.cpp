#include "nvcode2/gif/nvgifframe.h"

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvmaskrow.h"

namespace {

/** A byte for each of eight bits, the top bit's lowest: 0xFF where it is set, otherwise 0. */
std::uint64_t BytesOfBits(std::uint8_t inBits) {
    const std::uint64_t unset = NvFindZeroBytes(NvEightOf(inBits) & 0x0102040810204080U);
    return ~((unset >> 7) * 0xFF);
}

} // namespace

NvGIFFrame::NvGIFFrame(NvIndexedImage&& inImage, NvBitmapImage&& inMask,
                       std::unique_ptr<NvGIFFrameInfo> inInfo)
    : NvImage(inImage.GetWidth(), inImage.GetHeight(), km_GIFFrame),
      mImage(std::move(inImage)),
      mMask(std::move(inMask)) {
    NvAssert(inInfo);
    NvAssert(mMask.GetWidth() == mWidth && mMask.GetHeight() == mHeight);
    NvAssert(mMask.GetPolarity() == 0);
    NvAssert(inInfo->mWidth == mWidth && inInfo->mHeight == mHeight);
    NvGIFFrame::SetFormatInfo(std::move(inInfo));
}

void NvGIFFrame::SetFormatInfo(std::unique_ptr<NvImgFmtFrameInfo> inInfo) {
    const NvImgFmtFrameInfo* const infoPtr = inInfo.get();
    if (!infoPtr || typeid(*infoPtr) != typeid(NvGIFFrameInfo))
        NvThrow(NvErrorCode::km_WrongFormatInfo);
    NvImage::SetFormatInfo(std::move(inInfo));
}

std::unique_ptr<NvImgFmtFrameInfo> NvGIFFrame::DetachFormatInfo() {
    NvThrow(NvErrorCode::km_NotSupported);
}

std::unique_ptr<NvImage> NvGIFFrame::Clone() const {
    return Copy();
}

std::unique_ptr<NvGIFFrame> NvGIFFrame::Copy() const {
    return CropCopy({0, 0, static_cast<std::int32_t>(mWidth), static_cast<std::int32_t>(mHeight)});
}

void NvGIFFrame::ReadRGB(const NvRect& inSourceRect, std::uint8_t* outData, std::uint32_t inDestRowBytes,
                         const NvRGBLayout& inLayout) const {
    NvAssert((inSourceRect.top < inSourceRect.bottom) && (inSourceRect.left < inSourceRect.right));
    NvAssert(inSourceRect.top >= 0 && inSourceRect.left >= 0);
    NvAssert(std::cmp_less_equal(inSourceRect.bottom, mHeight) &&
             std::cmp_less_equal(inSourceRect.right, mWidth));
    NvAssertLayout(inLayout);
    NvAssert(outData);
    const NvColorTable& table = mImage.GetColorTable();
    const NvConstPixelLock pixels(mImage);
    const NvConstPixelLock mask(mMask);
    for (std::int32_t v = inSourceRect.top; v < inSourceRect.bottom; ++v, outData += inDestRowBytes) {
        const auto y = static_cast<std::uint32_t>(v);
        std::uint8_t* out = outData;
        for (std::int32_t h = inSourceRect.left; h < inSourceRect.right; ++h, out += inLayout.pixelBytes) {
            const auto x = static_cast<std::uint32_t>(h);
            if (!NvBitmapImage::GetBit(mask.Row(y), mMask.GetRowBytes(), x, 0))
                continue;
            const NvColor& color = table.GetColor(pixels.Row(y)[x]);
            out[inLayout.redIndex] = color.red;
            out[inLayout.greenIndex] = color.green;
            out[inLayout.blueIndex] = color.blue;
        }
    }
}

void NvGIFFrame::SetImage(NvIndexedImage&& inImage) {
    NvAssert(inImage.GetWidth() == mWidth && inImage.GetHeight() == mHeight);
    mImage = std::move(inImage);
}

NvRect NvGIFFrame::GetScreenRect() const {
    const NvGIFFrameInfo& info = GetInfo();
    return {info.mLeft, info.mTop, info.mLeft + info.mWidth, info.mTop + info.mHeight};
}

NvRect NvGIFFrame::FindDrawnBounds() const {
    NvRect bounds;
    mMask.FindContentBounds(bounds);
    return bounds;
}

std::unique_ptr<NvGIFFrame> NvGIFFrame::CropCopy(const NvRect& inRect) const {
    const std::unique_ptr<NvImage> image = mImage.CopyRegion(inRect);
    const std::unique_ptr<NvImage> mask = mMask.CopyRegion(inRect);
    auto info = std::make_unique<NvGIFFrameInfo>(GetInfo());
    info->mLeft = static_cast<std::uint16_t>(info->mLeft + inRect.left);
    info->mTop = static_cast<std::uint16_t>(info->mTop + inRect.top);
    info->mWidth = static_cast<std::uint16_t>(inRect.Width());
    info->mHeight = static_cast<std::uint16_t>(inRect.Height());
    return std::make_unique<NvGIFFrame>(static_cast<NvIndexedImage&&>(*image),
                                        static_cast<NvBitmapImage&&>(*mask), std::move(info));
}

bool NvGIFFrame::IsFullyDrawn() const {
    const NvConstPixelLock mask(mMask);
    for (std::uint32_t y = 0; y < mHeight; ++y)
        if (!NvIsRowSet(mask.Row(y), mWidth))
            return false;
    return true;
}

void NvGIFFrame::UpdateTransparency(NvColorTable* ioSharedTable, std::uint32_t inTableLimit) {
    NvHistogram histogram{}; // stays empty where nothing is looked for
    if (!IsFullyDrawn() && mImage.GetColorTable().GetSize() > 0)
        mImage.BuildMaskedHistogram(histogram.data(), &mMask);
    UpdateTransparency(ioSharedTable, inTableLimit, histogram);
}

void NvGIFFrame::UpdateTransparency(NvColorTable* ioSharedTable, std::uint32_t inTableLimit,
                                    const NvHistogram& inHistogram) {
    NvGIFFrameInfo& info = GetInfo();
    if (IsFullyDrawn()) {
        info.mHasTransparency = 0;
        info.mTransparentIndex = 0;
    } else {
        const std::uint32_t slot = FindTransparentSlot(ioSharedTable, inTableLimit, inHistogram);
        info.mHasTransparency = 1;
        info.mTransparentIndex = static_cast<std::uint8_t>(slot);
        SetUndrawnPixels(info.mTransparentIndex);
    }
    if (!ioSharedTable)
        info.mColorTable = mImage.GetColorTable();
}

void NvGIFFrame::UpdateMask() {
    NvAssert(HasTransparency());
    mMask = mImage.MakeMask(GetTransparentIndex());
    GetInfo().mHasTransparency = IsFullyDrawn() ? 0 : 1;
}

std::uint32_t NvGIFFrame::FindTransparentSlot(NvColorTable* ioSharedTable, std::uint32_t inTableLimit,
                                              const NvHistogram& inHistogram) {
    const NvGIFFrameInfo& info = GetInfo();
    const std::uint32_t size = mImage.GetColorTable().GetSize();
    const auto isUsed = [&](std::uint32_t inIndex) { return inHistogram[inIndex] != 0; };
    std::uint32_t usedEnd = size; // one past the highest index in use
    while (usedEnd > 0 && !isUsed(usedEnd - 1))
        --usedEnd;
    bool isFound = false; // otherwise the lowest is the one behind those in use
    const std::uint32_t lowest = NvIndexedImage::FindUnusedColor(inHistogram.data(), usedEnd, isFound);

    const auto bitsWith = [&](std::uint32_t inIndex) {
        return NvColorTable::GetBitsNeeded(std::max(usedEnd, inIndex + 1));
    };
    const std::uint32_t present = info.mTransparentIndex;
    if (info.mHasTransparency && present < size && !isUsed(present) && bitsWith(present) <= bitsWith(lowest))
        return present;
    if (lowest < size)
        return lowest;
    if (size < inTableLimit) {
        AppendEntry(ioSharedTable);
        return size;
    }
    return FreeCheapestSlot(inHistogram.data());
}

// A frame's own table may be the leading part of the shared one; it then gains the next shared entry.
void NvGIFFrame::AppendEntry(NvColorTable* ioSharedTable) {
    NvColorTable& table = mImage.GetColorTable();
    const std::uint32_t size = table.GetSize();
    NvColor color;
    if (ioSharedTable && size < ioSharedTable->GetSize()) {
        color = ioSharedTable->GetColor(size);
    } else if (ioSharedTable) {
        ioSharedTable->SetSize(size + 1);
        ioSharedTable->SetColor(size, color);
    }
    table.SetSize(size + 1);
    table.SetColor(size, color);
}

std::uint32_t NvGIFFrame::FreeCheapestSlot(const std::uint32_t* inHistogram) {
    const std::uint32_t size = mImage.GetColorTable().GetSize();
    NvHistogram counts{};
    std::copy_n(inHistogram, size, counts.begin());
    std::uint32_t freed = 0;
    std::uint32_t substitute = 0;
    mImage.ChooseColorToMerge(counts.data(), size, freed, substitute);
    mImage.ReplaceIndex(freed, substitute);
    return freed;
}

// Eight pixels at a time, since runs are short where a frame leaves much undrawn.
void NvGIFFrame::SetUndrawnPixels(std::uint8_t inIndex) {
    const NvPixelLock pixels(mImage);
    const NvConstPixelLock mask(mMask);
    const std::uint32_t wholeBytes = mWidth / 8;
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        std::uint8_t* row = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        for (std::uint32_t i = 0; i < wholeBytes; ++i)
            if (bits[i] != 0xFF) {
                const std::uint64_t drawn = BytesOfBits(bits[i]);
                const std::uint64_t eight = NvLoadLittleEndian(row + 8 * i);
                NvStoreLittleEndian(row + 8 * i, (eight & drawn) | (NvEightOf(inIndex) & ~drawn));
            }
        for (std::uint32_t x = 8 * wholeBytes; x < mWidth; ++x)
            if ((bits[wholeBytes] >> (7 - x % 8) & 1) == 0)
                row[x] = inIndex;
    }
}
