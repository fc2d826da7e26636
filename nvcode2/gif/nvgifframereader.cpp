#include "nvcode2/gif/nvgifframereader.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifplayer.h"

namespace {

/** Clears the mask for the pixels of each row behind those that arrived. @return whether there are any */
bool MaskMissingPixels(const std::vector<std::uint32_t>& inArrived, NvBitmapImage& ioMask) {
    const NvPixelLock mask(ioMask);
    bool isAnyMissing = false;
    for (std::uint32_t y = 0; y < ioMask.GetHeight(); ++y)
        for (std::uint32_t x = inArrived[y]; x < ioMask.GetWidth(); ++x) {
            NvBitmapImage::SetBit(mask.Row(y), ioMask.GetRowBytes(), x, 0, 0);
            isAnyMissing = true;
        }
    return isAnyMissing;
}

/** One past the highest index of the drawn pixels. */
std::uint32_t DrawnIndexEnd(const NvGIFFrame& inFrame) {
    const NvConstPixelLock pixels(inFrame.GetImage());
    const NvConstPixelLock mask(inFrame.GetMask());
    std::uint32_t end = 0;
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y) {
        const std::uint8_t* row = pixels.Row(y);
        const std::uint8_t* bits = mask.Row(y);
        for (std::uint32_t x = 0; x < inFrame.GetWidth(); ++x)
            if (row[x] >= end && (bits[x / 8] & (0x80U >> x % 8)))
                end = row[x] + 1U;
    }
    return end;
}

/** Fills a table up with black to a number of entries. */
void ExtendTable(NvColorTable& ioTable, std::uint32_t inSize) {
    const std::uint32_t oldSize = ioTable.GetSize();
    if (oldSize >= inSize)
        return;
    ioTable.SetSize(inSize);
    for (std::uint32_t i = oldSize; i < inSize; ++i)
        ioTable.SetColor(i, NvColor{});
}

/** Whether a frame with undrawn pixels, all of its transparent index, needs no change in that: no narrower
 *  code would do with another one. */
bool IsTransparencyInOrder(const NvGIFFrame& inFrame) {
    const std::uint32_t transparent = inFrame.GetTransparentIndex();
    const NvIndexedImage& image = inFrame.GetImage();
    if (!inFrame.HasTransparency() || transparent >= image.GetColorTable().GetSize() ||
        inFrame.IsFullyDrawn())
        return false;
    const std::uint32_t drawn = image.GetHighestIndexBut(static_cast<std::uint8_t>(transparent));
    return NvColorTable::GetBitsNeeded(drawn + 1) ==
           NvColorTable::GetBitsNeeded(std::max(drawn, transparent) + 1);
}

/** Gives every index that the frame uses an entry in its table.
 *  @param inIsWhole  undrawn pixels are those of the transparent index */
void MakeIndicesSound(NvGIFFrame& ioFrame, NvColorTable* ioSharedTable, bool inIsWhole) {
    NvColorTable& table = ioFrame.GetImage().GetColorTable();
    if (ioFrame.GetImage().GetHighestIndex() >= table.GetSize()) {
        const std::uint32_t end = DrawnIndexEnd(ioFrame);
        ExtendTable(table, end);
        if (ioSharedTable)
            ExtendTable(*ioSharedTable, end);
        else
            ioFrame.GetInfo().mColorTable = table;
    }
    if (!inIsWhole || !IsTransparencyInOrder(ioFrame))
        ioFrame.UpdateTransparency(ioSharedTable, 256);
}

} // namespace

NvGIFFrameReader::NvGIFFrameReader(const char* inPath, std::uint64_t inCommentLimit) {
    mFile.SetCommentLimit(inCommentLimit);
    Open(inPath);
    CheckFrames();
}

// A file that the system would not open counts as "not a GIF"; the system's reason goes along.
void NvGIFFrameReader::Open(const char* inPath) {
    const NvFileLocator locator(inPath);
    try {
        mFile.Open(locator, NvFile::km_ReadPerm);
    } catch (const NvErrorCode& error) {
        const std::uint32_t code = error.GetCode();
        if (code == NvErrorCode::km_UnknownGIFVersion || code == NvErrorCode::km_MalformedGIF ||
            code == NvErrorCode::km_EndOfFile || code == NvErrorCode::km_OutOfMemory ||
            code == NvErrorCode::km_OutOfRange)
            throw;
        NvThrowWithSystemError(NvErrorCode::km_NotGIF, error.GetSystemError());
    }
}

void NvGIFFrameReader::CheckFrames() {
    if (GetFrameCount() == 0)
        NvThrow(NvErrorCode::km_MalformedGIF);
    mColorsOfAllFrames = ShareGlobalInfo()->mColorTable.GetSize() + 1; // black, beyond tables
    for (std::uint32_t i = 0; i < GetFrameCount(); ++i) {
        const std::unique_ptr<NvImgFmtFrameInfo> record = mFile.ReadFrameInfo(i);
        auto& info = static_cast<NvGIFFrameInfo&>(*record);
        if (i == 0)
            mFile.CheckFrame(info);
        mFile.CheckUnclippedFrame(info);
        const std::uint64_t declared = std::uint64_t{info.mWidth} * info.mHeight;
        mDeclaredPixels += ClipToScreen(info) ? declared : 0;
        const std::uint64_t pixels = std::uint64_t{info.mWidth} * info.mHeight;
        mPixelsOfAllFrames += pixels;
        mPixelsOfLargestFrame = std::max(mPixelsOfLargestFrame, pixels);
        mColorsOfAllFrames += std::min<std::uint64_t>(pixels, info.mColorTable.GetSize());
        mAnyFrameRestores = mAnyFrameRestores || (info.RestoresPrevious() && i + 1 < GetFrameCount());
        mAnyFrameClears = mAnyFrameClears || info.mDisposal == NvGIFFrameInfo::km_DisposeClear;
    }
}

std::uint64_t NvGIFFrameReader::GetPixelsToDecode() const {
    constexpr std::uint64_t km_MostPerByte = 2730; // a string of 4094 pixels in 12 bits
    return std::min(mDeclaredPixels, GetLength() * km_MostPerByte);
}

std::uint64_t NvGIFFrameReader::EstimatePlayMemory() const {
    constexpr std::uint64_t km_PerFrame = 64;       // where it lies in the file
    constexpr std::uint64_t km_PerScreenPixel = 16; // a canvas with what it restores, and a copy to show
    return std::uint64_t{GetScreenWidth()} * GetScreenHeight() * km_PerScreenPixel +
           4 * mPixelsOfLargestFrame + GetFrameCount() * km_PerFrame;
}

bool NvGIFFrameReader::ClipToScreen(NvGIFFrameInfo& ioInfo) const {
    const bool isShown = ioInfo.mLeft < GetScreenWidth() && ioInfo.mTop < GetScreenHeight();
    if (!isShown) {
        ioInfo.mLeft = ioInfo.mTop = 0;
        ioInfo.mDisposal = NvGIFFrameInfo::km_DisposeLeave;
    }
    const std::uint32_t width = isShown ? GetScreenWidth() - ioInfo.mLeft : 1;
    const std::uint32_t height = isShown ? GetScreenHeight() - ioInfo.mTop : 1;
    ioInfo.mWidth = static_cast<std::uint16_t>(std::min<std::uint32_t>(ioInfo.mWidth, width));
    ioInfo.mHeight = static_cast<std::uint16_t>(std::min<std::uint32_t>(ioInfo.mHeight, height));
    return isShown;
}

/** Reads the rows that arrive of a frame's part on the screen, and none of a frame that has no such part.
 *  @param inBegin    takes the record of that part, and the table it is shown with
 *  @param inTakeRow  as NvGIFFile::RowTaker */
template <typename Begin, typename TakeRow>
void NvGIFFrameReader::ReadRows(std::uint32_t inIndex, const Begin& inBegin, const TakeRow& inTakeRow) {
    mClipped = mFile.OpenFrame(inIndex);
    const bool isShown = ClipToScreen(mClipped);
    inBegin(mClipped.mHasLocalTable ? mClipped.mColorTable : ShareGlobalInfo()->mColorTable);
    if (!isShown)
        return;
    try {
        mFile.ReadRows([&](std::uint32_t inY, const std::uint8_t* inPixels, std::uint32_t inCount) {
            if (inY < mClipped.mHeight)
                inTakeRow(inY, inPixels, std::min<std::uint32_t>(inCount, mClipped.mWidth));
        });
        if (mFile.GetDamage() == NvDataDamage::km_Undefined)
            NvThrow(NvErrorCode::km_MalformedGIF);
    } catch (const NvErrorCode& error) {
        if (error.GetCode() == NvErrorCode::km_MalformedGIF)
            mDamage = {inIndex + 1, NvDataDamage::km_Undefined};
        throw;
    }
    if (mFile.GetDamage() != NvDataDamage::km_None && mDamage.mFrame == 0)
        mDamage = {inIndex + 1, mFile.GetDamage()};
}

std::unique_ptr<NvGIFFrame> NvGIFFrameReader::ReadFrame(std::uint32_t inIndex) {
    NvIndexedImage image;
    std::optional<NvPixelLock> pixels;
    std::vector<std::uint32_t> arrived; // pixels of each row
    ReadRows(
        inIndex,
        [&](const NvColorTable& inTable) {
            image = NvIndexedImage(mClipped.mWidth, mClipped.mHeight, inTable);
            pixels.emplace(image);
            arrived.resize(mClipped.mHeight);
        },
        [&](std::uint32_t inY, const std::uint8_t* inPixels, std::uint32_t inCount) {
            std::copy_n(inPixels, inCount, pixels->Row(inY));
            arrived[inY] = inCount;
        });
    pixels.reset();
    NvBitmapImage mask = mClipped.mHasTransparency ? image.MakeMask(mClipped.mTransparentIndex)
                                                   : NvBitmapImage(image.GetWidth(), image.GetHeight(), 0, 1);
    const bool isWhole = !MaskMissingPixels(arrived, mask);
    auto frame = std::make_unique<NvGIFFrame>(std::move(image), std::move(mask),
                                              std::make_unique<NvGIFFrameInfo>(mClipped));
    MakeIndicesSound(*frame, mClipped.mHasLocalTable ? nullptr : &ShareGlobalInfo()->mColorTable, isWhole);
    return frame;
}

const NvGIFFrameInfo& NvGIFFrameReader::PlayFrame(std::uint32_t inIndex, NvGIFPlayer& ioPlayer) {
    ReadRows(
        inIndex, [&](const NvColorTable& inTable) { ioPlayer.BeginFrame(mClipped, inTable); },
        [&](std::uint32_t inY, const std::uint8_t* inPixels, std::uint32_t inCount) {
            ioPlayer.DrawRow(inY, inPixels, inCount);
        });
    return mClipped;
}
