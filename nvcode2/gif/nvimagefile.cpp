#include "nvcode2/gif/nvimagefile.h"

#include "nvcode2/base/nvassert.h"

NvImageFile::~NvImageFile() = default;

void NvImageFile::Open(const NvFileLocator& inLocator, std::uint16_t inPerm, bool inCloseOnClose) {
    NvAssertText(!((inPerm & NvFile::km_ReadPerm) && (inPerm & NvFile::km_WritePerm)),
                 "!( (inPerm & km_ReadPerm) && (inPerm & km_WritePerm) )");
    if (!(inPerm & NvFile::km_WritePerm)) {
        mHaveStarted = false;
        mNumberOfFrames = mCurrentFrameIndex = 0;
        ReleaseFrames();
        ForgetGlobalInfo();
    }
    mFile.SetPath(inLocator.GetPath());
    mFile.Open(inPerm, inCloseOnClose);
    mFilePerm = inPerm;
    if (inPerm & NvFile::km_WritePerm)
        return;
    try {
        BeginReading();
    } catch (...) {
        mFile.Close();
        mFilePerm = 0;
        ReleaseFrames();
        throw;
    }
}

void NvImageFile::BeginReading() {
    NvAssertText(IsOpenForReading(), "IsOpen() && (mFilePerm & km_ReadPerm)");
    if (mHaveStarted)
        return;
    mFile.GetLength(); // raises 29 where positions would not fit their type
    ReadGlobalInfo();
    mNumberOfFrames = FindFrames();
    mHaveStarted = true;
    if (mNumberOfFrames > 0)
        SeekToFrame(0);
}

void NvImageFile::Close() {
    if (mFilePerm & NvFile::km_WritePerm) {
        NvAssertText(IsOpenForWriting(), "IsOpen() && (mFilePerm & km_WritePerm)");
        NvAssert(mCurrentFrameIndex == mNumberOfFrames);
        if (!mHaveStarted)
            WriteGlobalInfo();
        WriteTrailer();
        FlushOutput();
        mWrittenLength = mFile.GetLength();
    }
    mFile.Close();
    mFilePerm = 0;
    mHaveStarted = false;
    mCurrentFrameIndex = 0;
    ReleaseFrames();
}

void NvImageFile::SetNumberOfFrames(std::uint32_t inCount) {
    NvAssertText(!IsOpen() || (mFilePerm & NvFile::km_WritePerm),
                 "(!IsOpen()) || (mFilePerm & km_WritePerm)");
    mNumberOfFrames = inCount;
}

void NvImageFile::SetScreenSize(std::uint32_t inWidth, std::uint32_t inHeight) {
    NvAssertText(!IsOpen() || (mFilePerm & NvFile::km_WritePerm),
                 "(!IsOpen()) || (mFilePerm & km_WritePerm)");
    mScreenWidth = inWidth;
    mScreenHeight = inHeight;
}

void NvImageFile::BeginFrame() {
    NvAssertText(IsOpenForWriting(), "IsOpen() && (mFilePerm & km_WritePerm)");
    NvAssert(mCurrentFrameIndex < mNumberOfFrames);
    if (mHaveStarted)
        return;
    WriteGlobalInfo();
    mHaveStarted = true;
}
