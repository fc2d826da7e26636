#include "nvcode2/gif/nvgifframereader.h"

#include <algorithm>
#include <utility>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/gif/nvinterlace.h"

namespace {

std::uint64_t CountPixels(const NvIndexedImage& inImage) {
    return std::uint64_t{inImage.GetWidth()} * inImage.GetHeight();
}

/** Clears the mask for the pixels behind the first inDelivered ones in the file's row order. */
void MaskMissingPixels(std::uint64_t inDelivered, bool inInterlaced, NvBitmapImage& ioMask) {
    const NvPixelLock mask(ioMask);
    const std::uint32_t width = ioMask.GetWidth();
    std::uint64_t rowStart = 0; // pixels before this row in the file
    NvForEachRowInFileOrder(ioMask.GetHeight(), inInterlaced, [&](std::uint32_t y) {
        const std::uint64_t arrived = inDelivered > rowStart ? inDelivered - rowStart : 0;
        for (auto x = static_cast<std::uint32_t>(std::min<std::uint64_t>(arrived, width)); x < width; ++x)
            NvBitmapImage::SetBit(mask.Row(y), ioMask.GetRowBytes(), x, 0, 0);
        rowStart += width;
    });
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

// A file that the system would not open is told as "not a GIF we could load"; the system's reason goes along.
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
        const auto& info = static_cast<const NvGIFFrameInfo&>(*record);
        mFile.CheckFrame(info);
        const std::uint64_t pixels = std::uint64_t{info.mWidth} * info.mHeight;
        mPixelsOfAllFrames += pixels;
        mPixelsOfLargestFrame = std::max(mPixelsOfLargestFrame, pixels);
        mColorsOfAllFrames += std::min<std::uint64_t>(pixels, info.mColorTable.GetSize());
        mAnyFrameRestores = mAnyFrameRestores || (info.RestoresPrevious() && i + 1 < GetFrameCount());
        mAnyFrameClears = mAnyFrameClears || info.mDisposal == NvGIFFrameInfo::km_DisposeClear;
    }
}

std::uint64_t NvGIFFrameReader::EstimatePlayMemory() const {
    constexpr std::uint64_t km_PerFrame = 64;       // where it lies in the file
    constexpr std::uint64_t km_PerScreenPixel = 16; // a canvas with what it restores, and a copy to show
    return std::uint64_t{GetScreenWidth()} * GetScreenHeight() * km_PerScreenPixel +
           4 * mPixelsOfLargestFrame + GetFrameCount() * km_PerFrame;
}

std::unique_ptr<NvGIFFrame> NvGIFFrameReader::ReadFrame(std::uint32_t inIndex) {
    NvIndexedImage image;
    mFile.ReadFrame(inIndex, image);
    return MakeFrame(std::move(image), mFile.DetachFrameInfo());
}

const NvGIFFrameInfo& NvGIFFrameReader::PlayFrame(std::uint32_t inIndex, NvGIFPlayer& ioPlayer) {
    const NvGIFFrameInfo& info = mFile.OpenFrame(inIndex);
    ioPlayer.BeginFrame(info, info.mHasLocalTable ? info.mColorTable : ShareGlobalInfo()->mColorTable);
    mFile.ReadRows([&](std::uint32_t inY, const std::uint8_t* inPixels, std::uint32_t inCount) {
        ioPlayer.DrawRow(inY, inPixels, inCount);
    });
    if (mFile.GetDeliveredPixels() == std::uint64_t{info.mWidth} * info.mHeight)
        return info;
    // What is missing takes an entry of the table, which may cost the frame one of its colours.
    mCutFrame = ReadFrame(inIndex);
    ioPlayer.DrawFrame(*mCutFrame);
    return mCutFrame->GetInfo();
}

/** @param inImage  the pixels that mFile read last */
std::unique_ptr<NvGIFFrame> NvGIFFrameReader::MakeFrame(NvIndexedImage&& inImage,
                                                        std::unique_ptr<NvGIFFrameInfo> inInfo) {
    NvColorTable* sharedTable = inInfo->mHasLocalTable ? nullptr : &mFile.GetGlobalInfo()->mColorTable;
    NvBitmapImage mask = inInfo->mHasTransparency
                             ? inImage.MakeMask(inInfo->mTransparentIndex)
                             : NvBitmapImage(inImage.GetWidth(), inImage.GetHeight(), 0, 1);
    const bool isWhole = mFile.GetDeliveredPixels() == CountPixels(inImage);
    if (!isWhole)
        MaskMissingPixels(mFile.GetDeliveredPixels(), inInfo->mInterlaced != 0, mask);
    auto frame = std::make_unique<NvGIFFrame>(std::move(inImage), std::move(mask), std::move(inInfo));
    MakeIndicesSound(*frame, sharedTable, isWhole);
    return frame;
}
