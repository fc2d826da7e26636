// Any bytes as a GIF file: an orderly error, or frames that can be read again, written, and read once more.

#include <memory>
#include <utility>
#include <vector>

#include "fuzz/fuzz.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/image/nvindexedimage.h"

namespace {

constexpr std::uint64_t km_MaxPixels = 1 << 20; // of all frames; more only costs time

struct Frame {
    NvIndexedImage mImage;
    std::unique_ptr<NvGIFFrameInfo> mInfo;
};

std::vector<std::uint8_t> PixelsOf(const NvIndexedImage& inImage) {
    const NvConstPixelLock pixels(inImage);
    return {pixels.Row(0), pixels.Row(inImage.GetHeight())};
}

bool SameFrame(const Frame& inLeft, const Frame& inRight) {
    const NvGIFFrameInfo& left = *inLeft.mInfo;
    const NvGIFFrameInfo& right = *inRight.mInfo;
    return PixelsOf(inLeft.mImage) == PixelsOf(inRight.mImage) && left.mLeft == right.mLeft &&
           left.mTop == right.mTop && left.mWidth == right.mWidth && left.mHeight == right.mHeight &&
           left.mHasLocalTable == right.mHasLocalTable && left.mColorTable == right.mColorTable &&
           left.mInterlaced == right.mInterlaced && left.mHasGraphicControl == right.mHasGraphicControl &&
           left.mDelay == right.mDelay && left.mUserInput == right.mUserInput &&
           left.mDisposal == right.mDisposal && left.mHasTransparency == right.mHasTransparency &&
           left.mTransparentIndex == right.mTransparentIndex;
}

/** Bytes of all comments, an empty one counting for nothing, as a file cannot hold it. */
std::string CommentsOf(const NvGIFGlobalInfo& inInfo) {
    std::string text;
    for (const std::string& comment : inInfo.mComments.GetTexts())
        text += comment;
    return text;
}

Frame ReadFrame(NvGIFFile& ioFile, std::uint32_t inIndex) {
    Frame frame;
    ioFile.ReadFrame(inIndex, frame.mImage);
    frame.mInfo = ioFile.DetachFrameInfo();
    Require(ioFile.GetDeliveredPixels() <= std::uint64_t{frame.mImage.GetWidth()} * frame.mImage.GetHeight(),
            "no more pixels than the frame has");
    return frame;
}

/** The frames that hold together, read last to first. */
std::vector<Frame> ReadFrames(NvGIFFile& ioFile) {
    std::vector<Frame> frames;
    std::uint64_t pixels = 0;
    for (std::uint32_t i = ioFile.GetNumberOfFrames(); i-- > 0;) {
        try {
            const std::unique_ptr<NvImgFmtFrameInfo> record = ioFile.ReadFrameInfo(i);
            const auto& info = static_cast<const NvGIFFrameInfo&>(*record);
            ioFile.CheckFrame(info);
            pixels += std::uint64_t{info.mWidth} * info.mHeight;
            if (pixels > km_MaxPixels)
                break;
            Frame frame = ReadFrame(ioFile, i);
            Require(SameFrame(frame, ReadFrame(ioFile, i)), "a frame reads the same twice");
            frames.push_back(std::move(frame));
        } catch (const NvErrorCode& error) {
            Require(error.GetCode() == NvErrorCode::km_MalformedGIF, "opened files hold whole blocks");
        }
    }
    return frames;
}

bool HasStrayIndex(const Frame& inFrame) {
    for (const std::uint8_t index : PixelsOf(inFrame.mImage))
        if (index >= inFrame.mImage.GetColorTable().GetSize())
            return true;
    return false;
}

void CheckRewriting(const NvGIFFile& inFile, const std::vector<Frame>& inFrames) {
    static const MemoryFile output;
    const NvFileLocator locator(output.GetPath().c_str());
    const std::shared_ptr<NvGIFGlobalInfo> global = inFile.GetGlobalInfo();
    NvGIFFile writer;
    writer.SetGlobalInfo(global);
    writer.Open(locator, NvFile::km_WritePerm);
    writer.SetScreenSize(inFile.GetScreenWidth(), inFile.GetScreenHeight());
    writer.SetNumberOfFrames(static_cast<std::uint32_t>(inFrames.size()));
    for (const Frame& frame : inFrames)
        writer.WriteFrame(frame.mImage, *frame.mInfo);
    writer.Close();

    NvGIFFile reader;
    reader.Open(locator, NvFile::km_ReadPerm);
    Require(reader.GetNumberOfFrames() == inFrames.size(), "as many frames as were written");
    for (std::uint32_t i = 0; i < reader.GetNumberOfFrames(); ++i)
        Require(SameFrame(ReadFrame(reader, i), inFrames[i]), "frames as they were written");
    const NvGIFGlobalInfo& again = *reader.GetGlobalInfo();
    Require(again.mColorTable == global->mColorTable && again.mHasLoop == global->mHasLoop &&
                again.mLoopCount == global->mLoopCount && again.mAspect == global->mAspect &&
                CommentsOf(again) == CommentsOf(*global),
            "the rest of the file as it was written");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize) {
    static MemoryFile input;
    input.SetBytes(inData, inSize);
    NvGIFFile file;
    try {
        file.Open(NvFileLocator(input.GetPath().c_str()), NvFile::km_ReadPerm);
    } catch (const NvErrorCode& error) {
        const std::uint32_t code = error.GetCode();
        Require(code == NvErrorCode::km_EndOfFile || code == NvErrorCode::km_MalformedGIF ||
                    code == NvErrorCode::km_NotGIF || code == NvErrorCode::km_UnknownGIFVersion,
                "an error that bytes can cause");
        return 0;
    }
    std::vector<Frame> frames = ReadFrames(file);
    std::erase_if(frames, HasStrayIndex);
    if (!frames.empty())
        CheckRewriting(file, frames);
    return 0;
}
