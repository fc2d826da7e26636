#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "nvcode2/file/nvfilereader.h"
#include "nvcode2/file/nvfilewriter.h"
#include "nvcode2/gif/nvgifdamage.h"
#include "nvcode2/gif/nvgifinfo.h"
#include "nvcode2/gif/nvimagefile.h"
#include "nvcode2/gif/nvlzwdecoder.h"
#include "nvcode2/gif/nvlzwencoder.h"

struct NvInterlacePass;

/** A GIF file, read or written frame by frame. README.md in this folder walks through the format.
 *
 *  Reading is lenient where real files need it, and only there:
 *  - zero bytes between blocks are passed over;
 *  - a file that ends between blocks after at least one whole image is read as if its trailer stood there;
 *  - a graphic control extension counts for the next image, the last one before it wins;
 *  - "ANIMEXTS1.0" is a looping block like "NETSCAPE2.0", and the count may stand behind other sub-blocks;
 *  - image data may be short, run over or hold undefined codes: see GetDeliveredPixels and GetDamage;
 *  - everything behind the trailer is ignored; so are plain text and unknown extensions.
 *
 *  Writing keeps comments (all ahead of the first frame), the looping block and the frame records, and no
 *  other extension. Tables are padded to the smallest power of two that holds them. */
class NvGIFFile final : public NvImageFile {
public:
    NvGIFFile();
    ~NvGIFFile() override;

    // ---- reading

    /** How many bytes the comments of a file opened from now on may take in memory, which can be many times
     *  what they take in the file; beyond them Open raises 2. Without a call there is no limit. */
    void SetCommentLimit(std::uint64_t inBytes) { mCommentLimit = inBytes; }

    /** What they take, about. */
    std::uint64_t GetCommentMemory() const { return mCommentMemory; }

    /** Reads signature and version, whatever follows them. The file must be open for reading.
     *  @return             whether the version is "89a"
     *  @throws NvErrorCode 32 when the signature is not "GIF", 33 for a version other than "87a" and "89a",
     *  18 when the file ends before */
    bool CheckSignature();

    /** Reads the screen descriptor and the global table into a fresh global record.
     *  @throws NvErrorCode as CheckSignature */
    void ReadGlobalInfo() override;

    /** Reads a frame's graphic control and image descriptor.
     *  @throws NvErrorCode 28 for a graphic control of another size than 4, 18 */
    std::unique_ptr<NvImgFmtFrameInfo> ReadFrameInfo(std::uint32_t inIndex) override;

    /** Reads one frame: its record, which DetachFrameInfo hands out, and its pixels.
     *
     *  @param outImage  becomes width x height pixels with the frame's own colour table, or the global one
     *  when it has none; pixels that did not arrive are 0. Indices may lie beyond the table.
     *  @throws NvErrorCode 28 for a frame that is empty, not inside the screen or without any colour table,
     *  and for corrupt data; nothing is allocated before that check. 18 when the file ends, 2 */
    void ReadFrame(std::uint32_t inIndex, NvIndexedImage& outImage) override;

    /** Takes a row of a frame: what arrived of its pixels, from the first on. */
    using RowTaker =
        std::function<void(std::uint32_t inY, const std::uint8_t* inPixels, std::uint32_t inCount)>;

    /** Reads a frame as ReadFrame does, for callers that need only a row at a time: first its record, then,
     * by ReadRows, the rows that arrived, in the order of the file. The frame may reach beyond the screen.
     *  @return  the record, which stays until another frame is opened or read */
    const NvGIFFrameInfo& OpenFrame(std::uint32_t inIndex);
    void ReadRows(const RowTaker& inTakeRow);

    void SeekToFrame(std::uint32_t inIndex) override;

    /** Checks a frame's record against the file, before memory is spent on its pixels.
     *  @throws NvErrorCode 28 when it is empty, reaches beyond the screen or has no colour table to use */
    void CheckFrame(const NvGIFFrameInfo& inInfo) const;

    /** The same for a caller who clips frames to the screen. */
    void CheckUnclippedFrame(const NvGIFFrameInfo& inInfo) const;

    /** The record of the frame read last, for callers who keep it; once per ReadFrame. */
    std::unique_ptr<NvGIFFrameInfo> DetachFrameInfo();

    /** How many pixels of the frame read last arrived, in the order of the file, for repair; see GetDamage.
     */
    std::uint64_t GetDeliveredPixels() const { return mDeliveredPixels; }

    /** What was wrong with its data, for a caller to decide on: its pixels are what the format's rules make
     *  of them. */
    NvDataDamage GetDamage() const { return mDamage; }

    // ---- writing

    /** Writes the signature, the screen descriptor, the global table, the looping block and all comments. A
     *  global-table flag without a table is cleared in the record.
     *  @throws NvErrorCode 21 for a table of more than 256 colours, and those of NvFile::Write */
    void WriteGlobalInfo() override;

    /** Writes one frame.
     *
     *  @param inImage      its colour count decides the minimum code size, its indices are all below that
     *  count
     *  @param inFrameInfo  an NvGIFFrameInfo; its size is that of the image
     *  @throws NvErrorCode 21 for no colours, more than 256, or an index beyond them; those of NvFile::Write
     */
    void WriteFrame(const NvIndexedImage& inImage, const NvImgFmtFrameInfo& inFrameInfo) override;

    /** Has the next frame written cut in a way of its own, see LZWEncoder::Begin.
     *  @param inStrings  borrowed until then */
    void CutNextFrame(const NvLZWStrings& inStrings) { mNextStrings = &inStrings; }

    void WriteTrailer() override;

    // ---- both

    /** Makes a fresh global record for writing, with every field zero. */
    static std::shared_ptr<NvGIFGlobalInfo> CreateGlobalInfo();

    /** The global record, read or to be written; null before either. It may be kept beyond the file's
     *  life. */
    std::shared_ptr<NvGIFGlobalInfo> GetGlobalInfo() const { return mGlobalInfo; }
    void SetGlobalInfo(std::shared_ptr<NvGIFGlobalInfo> inInfo) { mGlobalInfo = std::move(inInfo); }

private:
    struct FrameLocation {
        bool mHasGraphicControl;
        std::uint32_t mGraphicControlPosition; // just after the label 0xF9
        std::uint32_t mImagePosition;          // just after the separator 0x2C
    };

    std::uint32_t FindFrames() override;
    void ReleaseFrames() override;
    void FlushOutput() override;
    void ForgetGlobalInfo() override { mGlobalInfo.reset(); }

    void ScanExtension();
    void ScanGraphicControl();
    void ScanComment();
    void CountCommentMemory(std::uint64_t inBytes);
    void ScanApplication();
    void ScanLoop();
    void ScanImage();
    void EndData();
    void ReadPass(const NvInterlacePass& inPass, std::span<std::uint8_t> inBand, const RowTaker& inTakeRow);
    void ReadColorTable(NvColorTable& outTable, std::uint32_t inSize);
    void ReadGraphicControl(NvGIFFrameInfo& ioInfo);
    void ReadImageDescriptor(NvGIFFrameInfo& ioInfo);
    const FrameLocation& GetLocation(std::uint32_t inIndex) const;

    void WriteColorTable(const NvColorTable& inTable);
    void WriteLoop();
    void WriteComments();
    void WriteGraphicControl();
    void WriteImageDescriptor();

    NvFileReader mReader;
    NvFileWriter mWriter;
    LZWDecoder mDecoder;
    LZWEncoder mEncoder;
    const NvLZWStrings* mNextStrings = nullptr;
    std::shared_ptr<NvGIFGlobalInfo> mGlobalInfo;
    std::unique_ptr<NvGIFFrameInfo> mFrameInfoPtr; // of the frame read or written last
    std::vector<FrameLocation> mFrameLocations;    // in file order
    bool mPendingGraphicControl = false;           // while scanning: one waits for its image
    std::uint32_t mPendingPosition = 0;
    std::uint64_t mDeliveredPixels = 0;
    NvDataDamage mDamage = NvDataDamage::km_None;
    std::uint64_t mCommentLimit = UINT64_MAX;
    std::uint64_t mCommentMemory = 0;
};

/** The minimum code size for a number of colours: the bits that hold the highest index, 1 to 8.
 *  @throws NvErrorCode 21 for no colours or more than 256 */
std::uint8_t NvGIFMinimumCodeSize(std::uint32_t inColorCount);
