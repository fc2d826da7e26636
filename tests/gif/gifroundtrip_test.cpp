#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gif_lib.h>
#include <gtest/gtest.h>

#include "tests/gif/giffiles.h"
#include "tests/support/lzwreference.h"

namespace {

struct Frame {
    NvIndexedImage mImage;
    NvGIFFrameInfo mInfo;
};

/** A frame with every field of its record in use; half of them with a table of their own. */
Frame RandomFrame(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight, const NvColorTable& inShared,
                  std::mt19937& ioRandom) {
    const std::uint32_t width = 1 + RandomBelow(ioRandom, inScreenWidth);
    const std::uint32_t height = 1 + RandomBelow(ioRandom, inScreenHeight);
    const bool isLocal = RandomBelow(ioRandom, 2) == 0;
    const NvColorTable table =
        isLocal ? RandomTable(1 + RandomBelow(ioRandom, 256), ioRandom) : NvColorTable(inShared);
    NvIndexedImage image(width, height, table);
    {
        const NvPixelLock pixels(image);
        std::generate(pixels.Row(0), pixels.Row(height),
                      [&] { return static_cast<std::uint8_t>(RandomBelow(ioRandom, table.GetSize())); });
    }
    NvGIFFrameInfo info = PlainInfoFor(image);
    info.mLeft = static_cast<std::uint16_t>(RandomBelow(ioRandom, inScreenWidth - width + 1));
    info.mTop = static_cast<std::uint16_t>(RandomBelow(ioRandom, inScreenHeight - height + 1));
    info.mHasLocalTable = isLocal;
    if (isLocal)
        info.mColorTable = table;
    info.mInterlaced = ioRandom() & 1U;
    info.mHasGraphicControl = RandomBelow(ioRandom, 4) != 0;
    if (info.mHasGraphicControl) {
        info.mDelay = static_cast<std::uint16_t>(ioRandom());
        info.mUserInput = ioRandom() & 1U;
        info.mDisposal = RandomBelow(ioRandom, 8);
        info.mHasTransparency = ioRandom() & 1U;
        info.mTransparentIndex = static_cast<std::uint8_t>(ioRandom());
    }
    return {std::move(image), info};
}

void ExpectSameTable(const NvColorTable& inTable, const ColorMapObject* inMap) {
    ASSERT_TRUE(inMap);
    for (int i = 0; i < inMap->ColorCount; ++i) {
        const auto index = static_cast<std::uint32_t>(i);
        const NvColor color = index < inTable.GetSize() ? inTable.GetColor(index) : NvColor{};
        const GifColorType& entry = inMap->Colors[i];
        EXPECT_EQ(color, (NvColor{entry.Red, entry.Green, entry.Blue}));
    }
}

void ExpectSameFrame(const Frame& inFrame, GifFileType& inGif, int inIndex) {
    const SavedImage& saved = inGif.SavedImages[inIndex];
    const NvGIFFrameInfo& info = inFrame.mInfo;
    EXPECT_EQ(saved.ImageDesc.Left, info.mLeft);
    EXPECT_EQ(saved.ImageDesc.Top, info.mTop);
    ASSERT_EQ(saved.ImageDesc.Width, info.mWidth);
    ASSERT_EQ(saved.ImageDesc.Height, info.mHeight);
    EXPECT_EQ(saved.ImageDesc.Interlace, info.mInterlaced != 0);
    EXPECT_EQ(saved.ImageDesc.ColorMap != nullptr, info.mHasLocalTable != 0);
    if (info.mHasLocalTable)
        ExpectSameTable(info.mColorTable, saved.ImageDesc.ColorMap);
    const std::size_t count = std::size_t{info.mWidth} * info.mHeight;
    EXPECT_TRUE(BytesOf(inFrame.mImage) == Indices(saved.RasterBits, saved.RasterBits + count));

    GraphicsControlBlock control{};
    EXPECT_EQ(DGifSavedExtensionToGCB(&inGif, inIndex, &control) == GIF_OK, info.mHasGraphicControl != 0);
    if (!info.mHasGraphicControl)
        return;
    EXPECT_EQ(control.DelayTime, info.mDelay);
    EXPECT_EQ(control.DisposalMode, static_cast<int>(info.mDisposal));
    EXPECT_EQ(control.UserInputFlag, info.mUserInput != 0);
    EXPECT_EQ(control.TransparentColor,
              info.mHasTransparency ? info.mTransparentIndex : NO_TRANSPARENT_COLOR);
}

std::string BytesOf(const ExtensionBlock& inBlock) {
    return {reinterpret_cast<const char*>(inBlock.Bytes), static_cast<std::size_t>(inBlock.ByteCount)};
}

/** What another reader of the format sees. */
void ExpectReadByGiflib(const std::string& inPath, const NvGIFGlobalInfo& inGlobal,
                        const std::vector<Frame>& inFrames) {
    int error = 0;
    const auto close = [](GifFileType* inGif) { DGifCloseFile(inGif, nullptr); };
    const std::unique_ptr<GifFileType, decltype(close)> gif(DGifOpenFileName(inPath.c_str(), &error));
    ASSERT_TRUE(gif) << GifErrorString(error);
    ASSERT_EQ(DGifSlurp(gif.get()), GIF_OK) << GifErrorString(gif->Error);
    ExpectSameTable(inGlobal.mColorTable, gif->SColorMap);
    EXPECT_EQ(gif->SBackGroundColor, inGlobal.mBackgroundIndex);
    EXPECT_EQ(gif->AspectByte, inGlobal.mAspect);
    ASSERT_EQ(static_cast<std::size_t>(gif->ImageCount), inFrames.size());
    for (std::size_t i = 0; i < inFrames.size(); ++i)
        ExpectSameFrame(inFrames[i], *gif, static_cast<int>(i));

    const SavedImage& first = gif->SavedImages[0];
    ASSERT_GE(first.ExtensionBlockCount, 5);
    EXPECT_EQ(BytesOf(first.ExtensionBlocks[0]), "NETSCAPE2.0");
    EXPECT_EQ(BytesOf(first.ExtensionBlocks[1]), '\1' + GIFWord(inGlobal.mLoopCount));
    const auto* comment = static_cast<const NvGIFComment*>(inGlobal.mComments.GetFirst()->GetElement());
    EXPECT_EQ(BytesOf(first.ExtensionBlocks[2]) + BytesOf(first.ExtensionBlocks[3]) +
                  BytesOf(first.ExtensionBlocks[4]),
              comment->mText);
}

void ExpectReadBack(const std::string& inBytes, const NvGIFGlobalInfo& inGlobal,
                    const std::vector<Frame>& inFrames) {
    GIFInput file(inBytes);
    file.Open();
    const NvGIFGlobalInfo& global = *file->GetGlobalInfo();
    EXPECT_EQ(global.mColorResolution, inGlobal.mColorResolution);
    EXPECT_EQ(global.mLoopCount, inGlobal.mLoopCount);
    ASSERT_EQ(file->GetNumberOfFrames(), inFrames.size());
    for (std::uint32_t i = 0; i < inFrames.size(); ++i) {
        const NvGIFFrameInfo& info = inFrames[i].mInfo;
        EXPECT_TRUE(BytesOf(file.ReadImage(i)) == BytesOf(inFrames[i].mImage));
        const std::unique_ptr<NvGIFFrameInfo> read = file->DetachFrameInfo();
        EXPECT_EQ(read->mLeft, info.mLeft);
        EXPECT_EQ(read->mTop, info.mTop);
        EXPECT_EQ(read->mInterlaced, info.mInterlaced);
        EXPECT_EQ(read->mHasGraphicControl, info.mHasGraphicControl);
        EXPECT_EQ(read->mDelay, info.mDelay);
        EXPECT_EQ(read->mUserInput, info.mUserInput);
        EXPECT_EQ(read->mDisposal, info.mDisposal);
        EXPECT_EQ(read->mHasTransparency, info.mHasTransparency);
        EXPECT_EQ(read->mTransparentIndex, info.mTransparentIndex);
    }
}

TEST(GIFRoundTrip, TwoReadersSeeWhatWasWritten) {
    std::mt19937 random(5);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        GIFOutput file;
        NvGIFGlobalInfo& global = *file->GetGlobalInfo();
        global.mVersionFlag = 1;
        global.mHasGlobalTable = 1;
        global.mColorTable = RandomTable(1 + RandomBelow(random, 256), random);
        global.mColorResolution = static_cast<std::uint8_t>(1 + RandomBelow(random, 8));
        global.mBackgroundIndex = static_cast<std::uint8_t>(random());
        global.mAspect = static_cast<std::uint8_t>(random());
        global.mHasLoop = 1;
        global.mLoopCount = static_cast<std::uint16_t>(random());
        global.AppendComment(std::string(511 + RandomBelow(random, 255), 'c'));
        const std::uint32_t width = 1 + RandomBelow(random, 180);
        const std::uint32_t height = 1 + RandomBelow(random, 120);
        std::vector<Frame> frames;
        for (std::uint32_t count = 1 + RandomBelow(random, 4); count > 0; --count)
            frames.push_back(RandomFrame(width, height, global.mColorTable, random));

        file.Open(width, height, static_cast<std::uint32_t>(frames.size()));
        for (const Frame& frame : frames)
            file->WriteFrame(frame.mImage, frame.mInfo);
        const std::string bytes = file.Close();
        EXPECT_EQ(bytes.size(), file->GetWrittenLength());
        ExpectReadByGiflib(file.GetPath(), global, frames);
        ExpectReadBack(bytes, global, frames);
    }
}

} // namespace
