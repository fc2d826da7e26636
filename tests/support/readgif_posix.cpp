#include <gif_lib.h>

#include "tests/support/testgif.h"

namespace {

TestTable ReadTable(const ColorMapObject* inMap) {
    TestTable table;
    for (int i = 0; inMap && i < inMap->ColorCount; ++i)
        table.push_back(static_cast<std::uint32_t>(inMap->Colors[i].Red << 16 | inMap->Colors[i].Green << 8 |
                                                   inMap->Colors[i].Blue));
    return table;
}

void ReadExtensions(const SavedImage& inImage, TestGIF& ioGIF, TestFrame& ioFrame) {
    bool inLoop = false;
    for (int i = 0; i < inImage.ExtensionBlockCount; ++i) {
        const ExtensionBlock& block = inImage.ExtensionBlocks[i];
        const std::string bytes(reinterpret_cast<const char*>(block.Bytes),
                                static_cast<std::size_t>(block.ByteCount));
        if (block.Function == GRAPHICS_EXT_FUNC_CODE) {
            GraphicsControlBlock control;
            EXPECT_EQ(DGifExtensionToGCB(bytes.size(), block.Bytes, &control), GIF_OK);
            ioFrame.mDelay = static_cast<std::uint32_t>(control.DelayTime);
            ioFrame.mDisposal = static_cast<std::uint32_t>(control.DisposalMode);
            ioFrame.mUserInput = control.UserInputFlag;
            ioFrame.mTransparent = control.TransparentColor;
        } else if (block.Function == COMMENT_EXT_FUNC_CODE) {
            ioGIF.mComments.push_back(bytes);
        } else if (block.Function == CONTINUE_EXT_FUNC_CODE && inLoop) {
            ioGIF.mLoop = block.Bytes[1] | block.Bytes[2] << 8;
        } else if (block.Function == CONTINUE_EXT_FUNC_CODE && !ioGIF.mComments.empty()) {
            ioGIF.mComments.back() += bytes;
        }
        inLoop = block.Function == APPLICATION_EXT_FUNC_CODE && bytes == "NETSCAPE2.0";
    }
}

} // namespace

TestGIF ReadGIF(const std::string& inPath) {
    const std::optional<TestGIF> gif = TryReadGIF(inPath);
    EXPECT_TRUE(gif) << inPath;
    return gif.value_or(TestGIF());
}

std::optional<TestGIF> TryReadGIF(const std::string& inPath) {
    TestGIF gif;
    int error = 0;
    GifFileType* file = DGifOpenFileName(inPath.c_str(), &error);
    if (!file || DGifSlurp(file) != GIF_OK) {
        DGifCloseFile(file, &error);
        return std::nullopt;
    }
    gif.mWidth = static_cast<std::uint32_t>(file->SWidth);
    gif.mHeight = static_cast<std::uint32_t>(file->SHeight);
    gif.mTable = ReadTable(file->SColorMap);
    gif.mBackground = static_cast<std::uint8_t>(file->SBackGroundColor);
    gif.mAspect = file->AspectByte;
    for (int i = 0; i < file->ImageCount; ++i) {
        const SavedImage& image = file->SavedImages[i];
        TestFrame frame;
        frame.mLeft = static_cast<std::uint32_t>(image.ImageDesc.Left);
        frame.mTop = static_cast<std::uint32_t>(image.ImageDesc.Top);
        frame.mWidth = static_cast<std::uint32_t>(image.ImageDesc.Width);
        frame.mHeight = static_cast<std::uint32_t>(image.ImageDesc.Height);
        frame.mPixels.assign(image.RasterBits, image.RasterBits + frame.mWidth * frame.mHeight);
        frame.mLocalTable = ReadTable(image.ImageDesc.ColorMap);
        frame.mInterlaced = image.ImageDesc.Interlace;
        ReadExtensions(image, gif, frame);
        gif.mFrames.push_back(frame);
    }
    DGifCloseFile(file, &error);
    return gif;
}
