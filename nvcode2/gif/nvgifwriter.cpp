// The writing side of NvGIFFile. All numbers of two bytes are little-endian.

#include <algorithm>
#include <typeinfo>
#include <utility>

#include "nvcode2/base/nvassert.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgifblocks.h"
#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvinterlace.h"
#include "nvcode2/image/nvindexedimage.h"

namespace {

/** The size field of a table: 2^(field + 1) entries hold it. */
std::uint32_t TableSizeField(const NvColorTable& inTable) {
    return NvGIFMinimumCodeSize(inTable.GetSize()) - 1U;
}

} // namespace

void NvGIFFile::WriteGlobalInfo() {
    // A file open for reading passes this, and fails the next: it has started.
    NvAssertText(IsOpen() && mFilePerm, "IsOpen() && mFilePerm && NvFile::km_WritePerm");
    NvAssert(mHaveStarted == 0);
    NvAssert(mGlobalInfo);
    NvAssert(mScreenWidth <= 0xFFFF && mScreenHeight <= 0xFFFF);
    NvGIFGlobalInfo& info = *mGlobalInfo;
    const NvColorTable& table = info.mColorTable;
    if (table.GetSize() == 0)
        info.mHasGlobalTable = 0;

    mWriter.Write(km_Signature, 3);
    mWriter.Write(info.mVersionFlag ? km_Version89a : km_Version87a, 3);
    mWriter.WriteWord(static_cast<std::uint16_t>(mScreenWidth));
    mWriter.WriteWord(static_cast<std::uint16_t>(mScreenHeight));
    std::uint32_t packed = 0;
    if (info.mHasGlobalTable)
        packed = km_TableFlag | ((info.mColorResolution - 1U) & 7U) << 4 | (info.mSortFlag ? 8U : 0U) |
                 TableSizeField(table);
    mWriter.WriteByte(static_cast<std::uint8_t>(packed));
    mWriter.WriteByte(info.mBackgroundIndex);
    mWriter.WriteByte(info.mAspect);
    if (info.mHasGlobalTable)
        WriteColorTable(table);
    if (info.mHasLoop)
        WriteLoop();
    WriteComments();
}

// Padded with black to the power of two that the size field names.
void NvGIFFile::WriteColorTable(const NvColorTable& inTable) {
    const std::uint32_t count = inTable.GetSize();
    mWriter.Write(inTable.GetColors(), 3 * count);
    for (std::uint32_t padding = 3 * ((2U << TableSizeField(inTable)) - count); padding > 0; --padding)
        mWriter.WriteByte(0);
}

void NvGIFFile::WriteLoop() {
    mWriter.WriteByte(km_Extension);
    mWriter.WriteByte(km_Application);
    mWriter.WriteByte(km_ApplicationIdentifierSize);
    mWriter.Write(km_LoopIdentifier, km_ApplicationIdentifierSize);
    mWriter.WriteByte(3);
    mWriter.WriteByte(1);
    mWriter.WriteWord(mGlobalInfo->mLoopCount);
    mWriter.WriteByte(0);
}

void NvGIFFile::WriteComments() {
    for (const NvList::Node* node = mGlobalInfo->mComments.GetFirst(); node; node = node->GetNext()) {
        const auto* inCommentPtr = static_cast<const NvGIFComment*>(node->GetElement());
        NvAssert(inCommentPtr);
        const std::string& text = inCommentPtr->mText;
        NvAssertText(text.data(), "mTextPtr");
        if (text.empty())
            continue;
        mWriter.WriteByte(km_Extension);
        mWriter.WriteByte(km_Comment);
        for (std::size_t start = 0; start < text.size(); start += 255) {
            const std::size_t length = std::min<std::size_t>(255, text.size() - start);
            mWriter.WriteByte(static_cast<std::uint8_t>(length));
            mWriter.Write(text.data() + start, static_cast<std::uint32_t>(length));
        }
        mWriter.WriteByte(0);
    }
}

void NvGIFFile::WriteFrame(const NvIndexedImage& inImage, const NvImgFmtFrameInfo& inFrameInfo) {
    BeginFrame();
    const NvImgFmtFrameInfo* infoPtr = &inFrameInfo;
    NvAssertText(typeid(*infoPtr) == typeid(NvGIFFrameInfo),
                 "typeid( *infoPtr ) == typeid( NvGIFFrameInfo )");
    mFrameInfoPtr = std::make_unique<NvGIFFrameInfo>(static_cast<const NvGIFFrameInfo&>(inFrameInfo));

    const std::uint32_t width = inImage.GetWidth();
    const std::uint32_t height = inImage.GetHeight();
    NvAssert(mFrameInfoPtr->mWidth == width && mFrameInfoPtr->mHeight == height);
    const std::uint32_t colorCount = inImage.GetColorTable().GetSize();
    mFrameInfoPtr->mMinimumCodeSize = NvGIFMinimumCodeSize(colorCount);
    if (inImage.GetHighestIndex() >= colorCount)
        NvThrow(NvErrorCode::km_BadParameter);
    const NvConstPixelLock pixels(inImage);

    if (mFrameInfoPtr->mHasGraphicControl)
        WriteGraphicControl();
    WriteImageDescriptor();
    mEncoder.Begin(mFrameInfoPtr->mMinimumCodeSize, std::exchange(mNextStrings, nullptr));
    const std::uint32_t stride = inImage.GetRowBytes();
    if (mFrameInfoPtr->mInterlaced) {
        for (const NvInterlacePass& pass : km_InterlacePasses)
            if (const std::uint32_t rows = pass.CountRows(height))
                mEncoder.EncodeRows(pixels.Row(pass.mStart), width, rows, stride * pass.mStep);
    } else {
        mEncoder.EncodeRows(pixels.Row(0), width, height, stride);
    }
    mEncoder.End();
    EndFrame();
}

void NvGIFFile::WriteGraphicControl() {
    const NvGIFFrameInfo& info = *mFrameInfoPtr;
    mWriter.WriteByte(km_Extension);
    mWriter.WriteByte(km_GraphicControl);
    mWriter.WriteByte(km_GraphicControlSize);
    mWriter.WriteByte(static_cast<std::uint8_t>(info.mDisposal << 2 | (info.mUserInput ? 2U : 0U) |
                                                (info.mHasTransparency ? 1U : 0U)));
    mWriter.WriteWord(info.mDelay);
    mWriter.WriteByte(info.mTransparentIndex);
    mWriter.WriteByte(0);
}

void NvGIFFile::WriteImageDescriptor() {
    const NvGIFFrameInfo& info = *mFrameInfoPtr;
    mWriter.WriteByte(km_ImageSeparator);
    mWriter.WriteWord(info.mLeft);
    mWriter.WriteWord(info.mTop);
    mWriter.WriteWord(info.mWidth);
    mWriter.WriteWord(info.mHeight);
    const std::uint32_t interlace = info.mInterlaced ? 0x40U : 0U;
    if (!info.mHasLocalTable) {
        mWriter.WriteByte(static_cast<std::uint8_t>(interlace));
        return;
    }
    mWriter.WriteByte(static_cast<std::uint8_t>(km_TableFlag | interlace | (info.mSortFlag ? 0x20U : 0U) |
                                                TableSizeField(info.mColorTable)));
    WriteColorTable(info.mColorTable);
}

void NvGIFFile::WriteTrailer() {
    mWriter.WriteByte(km_Trailer);
}

void NvGIFFile::FlushOutput() {
    mWriter.Flush();
}
