#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/file/nvfile.h"

class NvImgFmtFrameInfo;
class NvIndexedImage;

/** A file that holds a sequence of frames on one logical screen, and the order of calls that reading and
 *  writing it take.
 *
 *  Reading: Open, then any of the Read functions, Close.
 *  Writing: Open, SetScreenSize and SetNumberOfFrames, WriteFrame exactly that many times, Close. A writer
 *  that failed is destroyed without Close. The same object may be opened again after Close.
 *
 *  Breaking the order is an assertion; what a file's bytes can cause is an NvErrorCode. */
class NvImageFile {
public:
    NvImageFile() = default;
    NvImageFile(const NvImageFile&) = delete;
    NvImageFile& operator=(const NvImageFile&) = delete;

    // The virtual operations keep this order; new ones come last.

    virtual ~NvImageFile();

    virtual void ReadGlobalInfo() = 0;
    virtual void WriteGlobalInfo() = 0;

    /** Encodes the next frame, after the file's header when it is the first. */
    virtual void WriteFrame(const NvIndexedImage& inImage, const NvImgFmtFrameInfo& inFrameInfo) = 0;

    /** Ends the byte stream. */
    virtual void WriteTrailer() = 0;

protected:
    /** Releases what the format keeps of the frames of the file that was open. */
    virtual void ReleaseFrames() {}

    /** Finds every frame of the file; called once, after ReadGlobalInfo.
     *  @return the number of frames */
    virtual std::uint32_t FindFrames() = 0;

public:
    /** Only while closed or open for writing. */
    virtual void SetNumberOfFrames(std::uint32_t inCount);
    /** Only while closed or open for writing. Both in pixels. */
    virtual void SetScreenSize(std::uint32_t inWidth, std::uint32_t inHeight);

    /** The record of one frame, its pixels unread. Caller owns the result. */
    virtual std::unique_ptr<NvImgFmtFrameInfo> ReadFrameInfo(std::uint32_t inIndex) = 0;

    /** Decodes one frame. Frames may be read in any order. */
    virtual void ReadFrame(std::uint32_t inIndex, NvIndexedImage& outImage) = 0;

    /** Moves to the start of a frame in the file and makes it the current one. */
    virtual void SeekToFrame(std::uint32_t inIndex) = 0;

    /** Opens the file; for reading, reads its header and finds its frames.
     *
     *  @param inPerm   NvFile::km_ReadPerm, or NvFile::km_WritePerm with or without NvFile::km_CountPerm
     *  (which measures without a file); never both reading and writing
     *  @param inCloseOnClose  handed to NvFile: whether Close closes the descriptor
     *  @throws NvErrorCode  those of NvFile::Open, 29 for a file of 2 GiB or more to be read, and those of
     *  the format; the file is then closed */
    void Open(const NvFileLocator& inLocator, std::uint16_t inPerm, bool inCloseOnClose = true);

    /** Ends the file. Open for writing, the declared number of frames must have been written. */
    void Close();

    bool IsOpen() const { return mFile.IsOpen(); }

    /** Bytes of the open file. @throws NvErrorCode of NvFile::GetLength */
    std::uint32_t GetLength() const { return mFile.GetLength(); }

    /** Bytes of the file that was written last, known once it is closed; in counting mode too. */
    std::uint32_t GetWrittenLength() const { return mWrittenLength; }

    std::uint32_t GetNumberOfFrames() const { return mNumberOfFrames; }
    /** The frame sought, or the next one to be written. For loops that have no index of their own. */
    std::uint32_t GetCurrentFrameIndex() const { return mCurrentFrameIndex; }
    std::uint32_t GetScreenWidth() const { return mScreenWidth; }   ///< pixels
    std::uint32_t GetScreenHeight() const { return mScreenHeight; } ///< pixels

protected:
    /** Called when everything of a written file has been handed over, before it is closed. */
    virtual void FlushOutput() {}

    /** Called before a file is opened for reading: what the last one said is forgotten. */
    virtual void ForgetGlobalInfo() {}

    bool IsOpenForReading() const { return IsOpen() && (mFilePerm & NvFile::km_ReadPerm); }
    bool IsOpenForWriting() const { return IsOpen() && (mFilePerm & NvFile::km_WritePerm); }

    /** What every WriteFrame does first: checks the order of calls and writes the header before frame 0. */
    void BeginFrame();
    /** What every WriteFrame does last. */
    void EndFrame() { ++mCurrentFrameIndex; }

    NvFile mFile;
    std::uint16_t mFilePerm = 0; // permission bits while open, else 0
    bool mHaveStarted = false;   // the file's header has been read or written
    std::uint32_t mNumberOfFrames = 0;
    std::uint32_t mCurrentFrameIndex = 0;
    std::uint32_t mScreenWidth = 0;
    std::uint32_t mScreenHeight = 0;

private:
    std::uint32_t mWrittenLength = 0; // bytes

    void BeginReading();
};
