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

NvColorTable TableOf(const ColorMapObject& inMap) {
    NvColorTable table(static_cast<std::uint32_t>(inMap.ColorCount));
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i, {inMap.Colors[i].Red, inMap.Colors[i].Green, inMap.Colors[i].Blue});
    return table;
}

/** A frame with every field of its record in use; half of them with a table of their own. */
Frame RandomFrame(std::uint32_t inScreenWidth, std::uint32_t inScreenHeight, const NvColorTable& inShared,
                  std::mt19937& ioRandom) {
    const std::uint32_t width = 1 + RandomBelow(ioRandom, inScreenWidth);
    const std::uint32_t height = 1 + RandomBelow(ioRandom, inScreenHeight);
    const bool isLocal = RandomBelow(ioRandom, 2) == 0;
    const NvColorTable table =
        isLocal ? RandomTable(1 + RandomBelow(ioRandom, 256), ioRandom) : NvColorTable(inShared);
    NvIndexedImage image(width, height, table);
    std::vector<std::uint8_t> pixels(std::size_t{width} * height);
    std::ranges::generate(pixels,
                          [&] { return static_cast<std::uint8_t>(RandomBelow(ioRandom, table.GetSize())); });
    SetBytes(image, pixels);
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
        info.mTransparentIndex = static_cast<std::uint8_t>(info.mHasTransparency ? ioRandom() : 0);
    }
    return {std::move(image), info};
}

/** A frame as giflib tells of it. */
Frame FrameOf(GifFileType& inGif, int inIndex) {
    const SavedImage& saved = inGif.SavedImages[inIndex];
    const GifImageDesc& descriptor = saved.ImageDesc;
    NvIndexedImage image(static_cast<std::uint32_t>(descriptor.Width),
                         static_cast<std::uint32_t>(descriptor.Height), NvColorTable());
    const std::size_t pixelCount = std::size_t{image.GetWidth()} * image.GetHeight();
    SetBytes(image, {saved.RasterBits, saved.RasterBits + pixelCount});
    NvGIFFrameInfo info = PlainInfoFor(image);
    info.mLeft = static_cast<std::uint16_t>(descriptor.Left);
    info.mTop = static_cast<std::uint16_t>(descriptor.Top);
    info.mInterlaced = descriptor.Interlace;
    info.mHasLocalTable = descriptor.ColorMap != nullptr;
    if (descriptor.ColorMap)
        info.mColorTable = TableOf(*descriptor.ColorMap);
    GraphicsControlBlock control;
    if (DGifSavedExtensionToGCB(&inGif, inIndex, &control) == GIF_OK) {
        info.mHasGraphicControl = 1;
        info.mDelay = static_cast<std::uint16_t>(control.DelayTime);
        info.mUserInput = control.UserInputFlag;
        info.mDisposal = static_cast<std::uint32_t>(control.DisposalMode);
        info.mHasTransparency = control.TransparentColor != NO_TRANSPARENT_COLOR;
        info.mTransparentIndex =
            static_cast<std::uint8_t>(info.mHasTransparency ? control.TransparentColor : 0);
    }
    return {std::move(image), info};
}

void ExpectSameFrame(const Frame& inFrame, const Frame& inRead) {
    EXPECT_TRUE(BytesOf(inFrame.mImage) == BytesOf(inRead.mImage));
    EXPECT_EQ(FieldsOf(inFrame.mInfo), FieldsOf(inRead.mInfo));
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
    EXPECT_EQ(gif->SBackGroundColor, inGlobal.mBackgroundIndex);
    EXPECT_EQ(gif->AspectByte, inGlobal.mAspect);
    NvColorTable table = TableOf(*gif->SColorMap);
    table.SetSize(inGlobal.mColorTable.GetSize());
    EXPECT_TRUE(table == inGlobal.mColorTable);
    ASSERT_EQ(static_cast<std::size_t>(gif->ImageCount), inFrames.size());
    for (std::size_t i = 0; i < inFrames.size(); ++i)
        ExpectSameFrame(inFrames[i], FrameOf(*gif, static_cast<int>(i)));

    const ExtensionBlock* blocks = gif->SavedImages[0].ExtensionBlocks;
    ASSERT_GE(gif->SavedImages[0].ExtensionBlockCount, 5);
    EXPECT_EQ(BytesOf(blocks[0]), "NETSCAPE2.0");
    EXPECT_EQ(BytesOf(blocks[1]), '\1' + GIFWord(inGlobal.mLoopCount));
    const auto* comment = static_cast<const NvGIFComment*>(inGlobal.mComments.GetFirst()->GetElement());
    EXPECT_EQ(BytesOf(blocks[2]) + BytesOf(blocks[3]) + BytesOf(blocks[4]), comment->mText);
}

void ExpectReadBack(const std::string& inBytes, const NvGIFGlobalInfo& inGlobal,
                    const std::vector<Frame>& inFrames) {
    GIFInput file(inBytes);
    file.Open();
    EXPECT_EQ(file->GetGlobalInfo()->mColorResolution, inGlobal.mColorResolution);
    EXPECT_EQ(file->GetGlobalInfo()->mLoopCount, inGlobal.mLoopCount);
    ASSERT_EQ(file->GetNumberOfFrames(), inFrames.size());
    for (std::uint32_t i = 0; i < inFrames.size(); ++i) {
        NvIndexedImage image = file.ReadImage(i);
        ExpectSameFrame(inFrames[i], {std::move(image), *file->DetachFrameInfo()});
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
