#pragma once

#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/image/nvindexedimage.h"
#include "tests/image/images.h"
#include "tests/support/gifbytes.h"
#include "tests/support/randomgif.h"

/** A GIF file on disk for a reader under test. */
class GIFInput {
public:
    explicit GIFInput(const std::string& inBytes) : mLocator((mFolder / "in.gif").c_str()) {
        WriteTestFile(mFolder / "in.gif", inBytes);
    }

    void Open() { mFile.Open(mLocator, NvFile::km_ReadPerm); }
    NvGIFFile* operator->() { return &mFile; }
    NvGIFFile& operator*() { return mFile; }

    NvIndexedImage ReadImage(std::uint32_t inIndex) {
        NvIndexedImage image;
        mFile.ReadFrame(inIndex, image);
        return image;
    }

private:
    TestFolder mFolder;
    NvFileLocator mLocator;
    NvGIFFile mFile;
};

/** A GIF file that the writer under test writes. */
class GIFOutput {
public:
    GIFOutput() : mPath(mFolder / "out.gif") { mFile.SetGlobalInfo(NvGIFFile::CreateGlobalInfo()); }

    void Open(std::uint32_t inWidth, std::uint32_t inHeight, std::uint32_t inFrames,
              std::uint16_t inPerm = NvFile::km_WritePerm) {
        mFile.Open(NvFileLocator(mPath.c_str()), inPerm);
        mFile.SetScreenSize(inWidth, inHeight);
        mFile.SetNumberOfFrames(inFrames);
    }
    NvGIFFile* operator->() { return &mFile; }
    const std::string& GetPath() const { return mPath; }

    /** Ends the file and gives all of its bytes. */
    std::string Close() {
        mFile.Close();
        return ReadTestFile(mPath);
    }

private:
    TestFolder mFolder;
    std::string mPath;
    NvGIFFile mFile;
};

/** A record that fits an image at the screen's corner and says nothing else. */
inline NvGIFFrameInfo PlainInfoFor(const NvIndexedImage& inImage) {
    NvGIFFrameInfo info;
    info.mWidth = static_cast<std::uint16_t>(inImage.GetWidth());
    info.mHeight = static_cast<std::uint16_t>(inImage.GetHeight());
    info.mHasLocalTable = 0;
    info.mHasGraphicControl = 0;
    return info;
}

/** Opens a file and reads all of its frames; the code of the error that this raises, or 0. */
inline std::uint32_t CodeOfReadingAll(const std::string& inBytes) {
    return CodeOf([&] {
        GIFInput file(inBytes);
        file.Open();
        for (std::uint32_t i = 0; i < file->GetNumberOfFrames(); ++i)
            file.ReadImage(i);
    });
}
