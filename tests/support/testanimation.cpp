#include "tests/support/testanimation.h"

#include "nvcode2/gif/nvlzwstringtable.h"

namespace {

NvColorTable MakeTable(const TestTable& inTable) {
    NvColorTable table(static_cast<std::uint32_t>(inTable.size()));
    for (std::uint32_t i = 0; i < table.GetSize(); ++i)
        table.SetColor(i,
                       {static_cast<std::uint8_t>(inTable[i] >> 16),
                        static_cast<std::uint8_t>(inTable[i] >> 8), static_cast<std::uint8_t>(inTable[i])});
    return table;
}

TestTable DescribeTable(const NvColorTable& inTable) {
    TestTable table;
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i) {
        const NvColor& color = inTable.GetColor(i);
        table.push_back(static_cast<std::uint32_t>(color.red << 16 | color.green << 8 | color.blue));
    }
    return table;
}

bool IsDrawn(const NvGIFFrame& inFrame, std::uint32_t inX, std::uint32_t inY) {
    const NvConstPixelLock mask(inFrame.GetMask());
    return NvBitmapImage::GetBit(mask.Row(inY), inFrame.GetMask().GetRowBytes(), inX, 0) != 0;
}

std::unique_ptr<NvGIFFrame> MakeFrame(const TestFrame& inFrame, const NvColorTable& inSharedTable) {
    auto info = std::make_unique<NvGIFFrameInfo>();
    info->mLeft = static_cast<std::uint16_t>(inFrame.mLeft);
    info->mTop = static_cast<std::uint16_t>(inFrame.mTop);
    info->mWidth = static_cast<std::uint16_t>(inFrame.mWidth);
    info->mHeight = static_cast<std::uint16_t>(inFrame.mHeight);
    info->mHasLocalTable = inFrame.mLocalTable.empty() ? 0 : 1;
    info->mColorTable = MakeTable(inFrame.mLocalTable);
    info->mInterlaced = inFrame.mInterlaced ? 1 : 0;
    info->mDelay = static_cast<std::uint16_t>(inFrame.mDelay);
    info->mUserInput = inFrame.mUserInput ? 1 : 0;
    info->mDisposal = inFrame.mDisposal;
    info->mHasTransparency = inFrame.mTransparent >= 0 ? 1 : 0;
    info->mTransparentIndex = static_cast<std::uint8_t>(std::max(inFrame.mTransparent, 0));

    NvIndexedImage image(inFrame.mWidth, inFrame.mHeight,
                         info->mHasLocalTable ? info->mColorTable : inSharedTable);
    NvBitmapImage mask(inFrame.mWidth, inFrame.mHeight, 0, 1);
    {
        const NvPixelLock pixels(image);
        const NvPixelLock bits(mask);
        for (std::uint32_t y = 0; y < inFrame.mHeight; ++y)
            for (std::uint32_t x = 0; x < inFrame.mWidth; ++x) {
                const std::uint8_t index = inFrame.mPixels[y * inFrame.mWidth + x];
                pixels.Row(y)[x] = index;
                NvBitmapImage::SetBit(bits.Row(y), mask.GetRowBytes(), x, 0,
                                      index != inFrame.mTransparent ? 1 : 0);
            }
    }
    return std::make_unique<NvGIFFrame>(std::move(image), std::move(mask), std::move(info));
}

void ExpectTablesAgree(const NvGIFFrame& inFrame, const NvColorTable& inSharedTable) {
    const TestTable shown = DescribeTable(inFrame.GetImage().GetColorTable());
    const NvGIFFrameInfo& info = inFrame.GetInfo();
    const TestTable stored = DescribeTable(info.mHasLocalTable ? info.mColorTable : inSharedTable);
    ASSERT_LE(shown.size(), stored.size());
    EXPECT_TRUE(std::equal(shown.begin(), shown.end(), stored.begin()))
        << "the frame shows other colours than its file would";
}

} // namespace

TestAnimation::TestAnimation(const NvAnimation& inPacked)
    : TestAnimation(inPacked.ShareGlobalInfo(), inPacked.GetScreenWidth(), inPacked.GetScreenHeight()) {
    for (std::uint32_t i = 0; i < inPacked.GetFrameCount(); ++i)
        mFrames.push_back(inPacked.GetFrame(i));
}

std::unique_ptr<NvAnimation> TestAnimation::Pack() const {
    auto packed = std::make_unique<NvAnimation>(mInfo, mWidth, mHeight);
    NvLZWStringTable strings;
    for (const auto& frame : mFrames)
        packed->AddFrame(NvPackedFrame(frame->Copy(), strings));
    return packed;
}

std::unique_ptr<TestAnimation> MakeAnimation(const TestGIF& inGIF) {
    auto info = std::make_shared<NvGIFGlobalInfo>();
    info->mColorResolution = 8;
    info->mHasGlobalTable = inGIF.mTable.empty() ? 0 : 1;
    info->mColorTable = MakeTable(inGIF.mTable);
    info->mBackgroundIndex = inGIF.mBackground;
    info->mAspect = inGIF.mAspect;
    info->mHasLoop = inGIF.mLoop ? 1 : 0;
    info->mLoopCount = static_cast<std::uint16_t>(inGIF.mLoop.value_or(0));
    for (const std::string& comment : inGIF.mComments)
        info->mComments.Append(comment);
    auto animation = std::make_unique<TestAnimation>(info, inGIF.mWidth, inGIF.mHeight);
    for (const TestFrame& frame : inGIF.mFrames)
        animation->mFrames.push_back(MakeFrame(frame, info->mColorTable));
    return animation;
}

TestGIF Describe(const NvGIFGlobalInfo& inInfo, std::uint32_t inWidth, std::uint32_t inHeight) {
    TestGIF gif;
    gif.mWidth = inWidth;
    gif.mHeight = inHeight;
    if (inInfo.mHasGlobalTable)
        gif.mTable = DescribeTable(inInfo.mColorTable);
    gif.mBackground = inInfo.mBackgroundIndex;
    gif.mAspect = inInfo.mAspect;
    if (inInfo.mHasLoop)
        gif.mLoop = inInfo.mLoopCount;
    gif.mComments = inInfo.mComments.GetTexts();
    return gif;
}

TestFrame Describe(const NvGIFFrameInfo& inInfo, const NvIndexedImage& inImage) {
    TestFrame frame;
    frame.mLeft = inInfo.mLeft;
    frame.mTop = inInfo.mTop;
    frame.mWidth = inInfo.mWidth;
    frame.mHeight = inInfo.mHeight;
    frame.mDelay = inInfo.mDelay;
    frame.mDisposal = inInfo.mDisposal;
    frame.mUserInput = inInfo.mUserInput != 0;
    frame.mInterlaced = inInfo.mInterlaced != 0;
    frame.mTransparent = inInfo.mHasTransparency ? inInfo.mTransparentIndex : -1;
    if (inInfo.mHasLocalTable)
        frame.mLocalTable = DescribeTable(inImage.GetColorTable());
    const NvConstPixelLock pixels(inImage);
    for (std::uint32_t y = 0; y < frame.mHeight; ++y)
        frame.mPixels.insert(frame.mPixels.end(), pixels.Row(y), pixels.Row(y) + frame.mWidth);
    return frame;
}

TestGIF Describe(const TestAnimation& inAnimation) {
    const NvGIFGlobalInfo& global = *inAnimation.mInfo;
    TestGIF gif = Describe(global, inAnimation.mWidth, inAnimation.mHeight);
    for (const auto& shownFrame : inAnimation.mFrames) {
        const NvGIFFrame& shown = *shownFrame;
        SCOPED_TRACE("frame " + std::to_string(gif.mFrames.size()));
        ExpectTablesAgree(shown, global.mColorTable);
        const TestFrame frame = Describe(shown.GetInfo(), shown.GetImage());
        for (std::uint32_t at = 0; at < frame.mPixels.size(); ++at) {
            EXPECT_LT(frame.mPixels[at], shown.GetImage().GetColorTable().GetSize());
            EXPECT_EQ(IsDrawn(shown, at % frame.mWidth, at / frame.mWidth),
                      frame.mPixels[at] != frame.mTransparent)
                << "pixel " << at;
        }
        gif.mFrames.push_back(frame);
    }
    return gif;
}

TestCanvas CanvasOf(const NvGIFPlayer& inPlayer) {
    TestCanvas canvas;
    std::vector<NvGIFPlayer::Pixel> row(inPlayer.GetScreenWidth());
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y) {
        inPlayer.Read(y, {0, inPlayer.GetScreenWidth()}, row.data());
        for (const NvGIFPlayer::Pixel pixel : row)
            canvas.push_back(pixel == 0 ? km_Uncovered
                                        : static_cast<std::int32_t>((pixel & 0xFF) << 16 | (pixel & 0xFF00) |
                                                                    (pixel >> 16 & 0xFF)));
    }
    return canvas;
}

std::string Rows(const NvGIFFrame& inFrame) {
    std::string rows;
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y) {
        rows += y > 0 ? " " : "";
        for (std::uint32_t x = 0; x < inFrame.GetWidth(); ++x) {
            const int index = inFrame.GetImage().GetPixel(x, y);
            rows += !IsDrawn(inFrame, x, y) ? '.'
                                            : static_cast<char>(index < 10 ? '0' + index : 'a' + index - 10);
        }
    }
    return rows;
}

void TestHost::BackupFile(const char* inPath) {
    mBackups.push_back(ReadTestFile(inPath));
}

bool TestHost::ReportProgress(double inFraction) {
    mProgress.push_back(inFraction);
    return mProgress.size() > mStopAt;
}
