// The reading side of NvGIFFile.

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifblocks.h"
#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvinterlace.h"
#include "nvcode2/image/nvindexedimage.h"

namespace {

// Record, list node and what the allocator adds to both: up to thirty times the three bytes in the file.
constexpr std::uint64_t km_MemoryPerComment = 96;

std::uint32_t TableSizeOf(std::uint32_t inPackedByte) {
    return 2U << (inPackedByte & 7U);
}

// Pixels read at once for those who take rows one by one.
constexpr std::size_t km_BandSize = 8192;

constexpr NvInterlacePass km_OnlyPass{0, 1};

std::span<const NvInterlacePass> PassesOf(const NvGIFFrameInfo& inInfo) {
    if (inInfo.mInterlaced)
        return km_InterlacePasses;
    return {&km_OnlyPass, 1};
}

bool IsLoopingIdentifier(const std::array<std::uint8_t, km_ApplicationIdentifierSize>& inIdentifier) {
    return std::memcmp(inIdentifier.data(), km_LoopIdentifier, inIdentifier.size()) == 0 ||
           std::memcmp(inIdentifier.data(), km_OtherLoopIdentifier, inIdentifier.size()) == 0;
}

} // namespace

bool NvGIFFile::CheckSignature() {
    std::array<char, 3> text{};
    mReader.Seek(0);
    mReader.Read(text.data(), 3);
    if (std::memcmp(text.data(), km_Signature, 3) != 0)
        NvThrow(NvErrorCode::km_NotGIF);
    mReader.Read(text.data(), 3);
    const bool is89a = std::memcmp(text.data(), km_Version89a, 3) == 0;
    if (!is89a && std::memcmp(text.data(), km_Version87a, 3) != 0)
        NvThrow(NvErrorCode::km_UnknownGIFVersion);
    return is89a;
}

void NvGIFFile::ReadGlobalInfo() {
    mGlobalInfo = NvGIFGlobalInfo::MakeReaderDefault();
    NvGIFGlobalInfo& info = *mGlobalInfo;
    info.mVersionFlag = CheckSignature() ? 1 : 0;
    mScreenWidth = mReader.ReadWord();
    mScreenHeight = mReader.ReadWord();
    const std::uint32_t packed = mReader.ReadByte();
    info.mHasGlobalTable = (packed >> 7) & 1U;
    info.mColorResolution = static_cast<std::uint8_t>(((packed >> 4) & 7U) + 1);
    info.mSortFlag = (packed >> 3) & 1U;
    info.mDeclaredTableSize =
        info.mHasGlobalTable ? static_cast<std::uint16_t>(TableSizeOf(packed)) : std::uint16_t{0};
    info.mBackgroundIndex = mReader.ReadByte();
    info.mAspect = mReader.ReadByte();
    if (info.mHasGlobalTable)
        ReadColorTable(info.mColorTable, info.mDeclaredTableSize);
}

std::uint32_t NvGIFFile::FindFrames() {
    mFrameLocations.clear();
    mPendingGraphicControl = false;
    mCommentMemory = 0;
    for (;;) {
        if (mReader.IsAtEnd() && !mFrameLocations.empty())
            break;
        const std::uint8_t introducer = mReader.ReadByte();
        if (introducer == km_Trailer)
            break;
        if (introducer == km_Extension)
            ScanExtension();
        else if (introducer == km_ImageSeparator)
            ScanImage();
        else if (introducer != 0)
            NvThrow(NvErrorCode::km_MalformedGIF);
    }
    return static_cast<std::uint32_t>(mFrameLocations.size());
}

void NvGIFFile::ScanExtension() {
    switch (mReader.ReadByte()) {
    case km_GraphicControl:
        ScanGraphicControl();
        break;
    case km_Comment:
        ScanComment();
        break;
    case km_Application:
        ScanApplication();
        break;
    default:
        mReader.SkipSubBlocks();
    }
}

void NvGIFFile::ScanGraphicControl() {
    if (!IsOpen())
        NvThrow(NvErrorCode::km_FileNotOpen);
    mPendingGraphicControl = true;
    mPendingPosition = mReader.GetPosition();
    mReader.SkipSubBlocks();
}

void NvGIFFile::ScanComment() {
    std::string text;
    CountCommentMemory(km_MemoryPerComment);
    while (const std::uint8_t length = mReader.ReadByte()) {
        CountCommentMemory(length);
        const std::size_t end = text.size();
        NvAllocate([&] { text.resize(end + length); });
        mReader.Read(text.data() + end, length);
    }
    mGlobalInfo->mComments.Append(std::move(text));
}

void NvGIFFile::CountCommentMemory(std::uint64_t inBytes) {
    mCommentMemory += inBytes;
    if (mCommentMemory > mCommentLimit)
        NvThrow(NvErrorCode::km_OutOfMemory);
}

void NvGIFFile::ScanApplication() {
    const std::uint8_t blockSize = mReader.ReadByte();
    if (blockSize == 0)
        return;
    if (blockSize != km_ApplicationIdentifierSize) {
        mReader.Skip(blockSize);
        mReader.SkipSubBlocks();
        return;
    }
    std::array<std::uint8_t, km_ApplicationIdentifierSize> identifier{};
    mReader.Read(identifier.data(), km_ApplicationIdentifierSize);
    if (IsLoopingIdentifier(identifier))
        ScanLoop();
    else
        mReader.SkipSubBlocks();
}

// A sub-block of at least three bytes, the first of which is 1, holds the count. Others may stand beside it:
// players ask for buffering that way.
void NvGIFFile::ScanLoop() {
    while (const std::uint8_t length = mReader.ReadByte()) {
        std::uint32_t rest = length;
        if (length >= 3) {
            const bool isCount = mReader.ReadByte() == 1;
            rest -= 1;
            if (isCount) {
                mGlobalInfo->mLoopCount = mReader.ReadWord();
                mGlobalInfo->mHasLoop = 1;
                rest -= 2;
            }
        }
        mReader.Skip(rest);
    }
}

void NvGIFFile::ScanImage() {
    mFrameLocations.push_back({mPendingGraphicControl, mPendingPosition, mReader.GetPosition()});
    mReader.Skip(8); // position and size
    const std::uint32_t packed = mReader.ReadByte();
    if (packed & km_TableFlag)
        mReader.Skip(3 * TableSizeOf(packed));
    mReader.Skip(1); // minimum code size
    mReader.SkipSubBlocks();
    mPendingGraphicControl = false;
}

void NvGIFFile::ReadColorTable(NvColorTable& outTable, std::uint32_t inSize) {
    outTable = NvColorTable(inSize);
    mReader.Read(outTable.GetColors(), 3 * inSize);
}

const NvGIFFile::FrameLocation& NvGIFFile::GetLocation(std::uint32_t inIndex) const {
    NvAssertText(IsOpenForReading(), "IsOpen() && (mFilePerm & km_ReadPerm)");
    NvAssertText(inIndex < mFrameLocations.size(), "frameLoc");
    return mFrameLocations[inIndex];
}

void NvGIFFile::SeekToFrame(std::uint32_t inIndex) {
    NvAssert(inIndex < mNumberOfFrames);
    const FrameLocation& location = GetLocation(inIndex);
    mReader.Seek(location.mHasGraphicControl ? location.mGraphicControlPosition : location.mImagePosition);
    mCurrentFrameIndex = inIndex;
}

std::unique_ptr<NvImgFmtFrameInfo> NvGIFFile::ReadFrameInfo(std::uint32_t inIndex) {
    const FrameLocation& location = GetLocation(inIndex);
    auto info = std::make_unique<NvGIFFrameInfo>();
    info->mHasGraphicControl = location.mHasGraphicControl ? 1 : 0;
    if (location.mHasGraphicControl) {
        mReader.Seek(location.mGraphicControlPosition);
        ReadGraphicControl(*info);
    }
    mReader.Seek(location.mImagePosition);
    ReadImageDescriptor(*info);
    return info;
}

void NvGIFFile::ReadGraphicControl(NvGIFFrameInfo& ioInfo) {
    if (mReader.ReadByte() != km_GraphicControlSize)
        NvThrow(NvErrorCode::km_MalformedGIF);
    const std::uint32_t packed = mReader.ReadByte();
    ioInfo.mDisposal = (packed >> 2) & 7U;
    ioInfo.mUserInput = (packed >> 1) & 1U;
    ioInfo.mHasTransparency = packed & 1U;
    ioInfo.mDelay = mReader.ReadWord();
    ioInfo.mTransparentIndex = mReader.ReadByte();
    mReader.SkipSubBlocks();
}

// Leaves the reader at the minimum code size, which the LZW decoder reads again.
void NvGIFFile::ReadImageDescriptor(NvGIFFrameInfo& ioInfo) {
    ioInfo.mLeft = mReader.ReadWord();
    ioInfo.mTop = mReader.ReadWord();
    ioInfo.mWidth = mReader.ReadWord();
    ioInfo.mHeight = mReader.ReadWord();
    const std::uint32_t packed = mReader.ReadByte();
    ioInfo.mHasLocalTable = packed & km_TableFlag ? 1 : 0;
    ioInfo.mInterlaced = (packed >> 6) & 1U;
    ioInfo.mSortFlag = (packed >> 5) & 1U;
    if (ioInfo.mHasLocalTable)
        ReadColorTable(ioInfo.mColorTable, TableSizeOf(packed));
    const std::uint32_t dataPosition = mReader.GetPosition();
    ioInfo.mMinimumCodeSize = mReader.ReadByte();
    mReader.Seek(dataPosition);
}

void NvGIFFile::CheckFrame(const NvGIFFrameInfo& inInfo) const {
    CheckUnclippedFrame(inInfo);
    const std::uint32_t right = std::uint32_t{inInfo.mLeft} + inInfo.mWidth;
    const std::uint32_t bottom = std::uint32_t{inInfo.mTop} + inInfo.mHeight;
    if (inInfo.mLeft >= mScreenWidth || inInfo.mTop >= mScreenHeight || right > mScreenWidth ||
        bottom > mScreenHeight)
        NvThrow(NvErrorCode::km_MalformedGIF);
}

void NvGIFFile::CheckUnclippedFrame(const NvGIFFrameInfo& inInfo) const {
    const bool isEmpty = inInfo.mWidth == 0 || inInfo.mHeight == 0;
    const bool hasTable = inInfo.mHasLocalTable || mGlobalInfo->mHasGlobalTable;
    if (isEmpty || !hasTable || mScreenWidth == 0 || mScreenHeight == 0)
        NvThrow(NvErrorCode::km_MalformedGIF);
}

const NvGIFFrameInfo& NvGIFFile::OpenFrame(std::uint32_t inIndex) {
    std::unique_ptr<NvImgFmtFrameInfo> record = ReadFrameInfo(inIndex);
    mFrameInfoPtr.reset(static_cast<NvGIFFrameInfo*>(record.release()));
    CheckUnclippedFrame(*mFrameInfoPtr);
    return *mFrameInfoPtr;
}

void NvGIFFile::ReadFrame(std::uint32_t inIndex, NvIndexedImage& outImage) {
    const NvGIFFrameInfo& info = OpenFrame(inIndex);
    CheckFrame(info);
    outImage = NvIndexedImage(info.mWidth, info.mHeight,
                              info.mHasLocalTable ? info.mColorTable : mGlobalInfo->mColorTable);
    NvPixelLock pixels(outImage);
    const std::uint32_t stride = outImage.GetRowBytes();
    mDecoder.Begin();
    mDeliveredPixels = 0;
    for (const NvInterlacePass& pass : PassesOf(info))
        if (const std::uint32_t rows = pass.CountRows(info.mHeight))
            mDeliveredPixels +=
                mDecoder.DecodeRows(pixels.Row(pass.mStart), info.mWidth, rows, stride * pass.mStep);
    EndData();
}

void NvGIFFile::EndData() {
    mDecoder.End();
    mDamage = NvDataDamage::km_None;
    if (mDecoder.MetUndefinedCode())
        mDamage = NvDataDamage::km_Undefined;
    else if (mDeliveredPixels < std::uint64_t{mFrameInfoPtr->mWidth} * mFrameInfoPtr->mHeight)
        mDamage = NvDataDamage::km_EndsEarly;
    else if (mDecoder.RunsOver())
        mDamage = NvDataDamage::km_RunsOver;
}

void NvGIFFile::ReadRows(const RowTaker& inTakeRow) {
    NvAssert(mFrameInfoPtr);
    const std::size_t bandSize = std::max<std::size_t>(mFrameInfoPtr->mWidth, km_BandSize);
    const auto band = NvMakeArray<std::uint8_t>(bandSize);
    mDecoder.Begin();
    mDeliveredPixels = 0;
    for (const NvInterlacePass& pass : PassesOf(*mFrameInfoPtr))
        ReadPass(pass, {band.get(), bandSize}, inTakeRow);
    EndData();
}

/** @param inBand  room for at least one row */
void NvGIFFile::ReadPass(const NvInterlacePass& inPass, std::span<std::uint8_t> inBand,
                         const RowTaker& inTakeRow) {
    const std::uint32_t width = mFrameInfoPtr->mWidth;
    const auto rowsInBand = static_cast<std::uint32_t>(inBand.size() / width);
    const std::uint32_t rows = inPass.CountRows(mFrameInfoPtr->mHeight);
    for (std::uint32_t first = 0; first < rows; first += rowsInBand) {
        std::uint64_t arrived =
            mDecoder.DecodeRows(inBand.data(), width, std::min(rowsInBand, rows - first), width);
        mDeliveredPixels += arrived;
        std::uint32_t row = first;
        for (const std::uint8_t* pixels = inBand.data(); arrived > 0; pixels += width, ++row) {
            const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(arrived, width));
            inTakeRow(inPass.mStart + row * inPass.mStep, pixels, count);
            arrived -= count;
        }
    }
}
