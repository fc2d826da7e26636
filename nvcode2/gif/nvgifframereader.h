#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/gif/nvgifdamage.h"
#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvgifframe.h"

class NvGIFPlayer;

/** Reads the frames of a GIF file one by one, each made sound: its mask says what a viewer draws, and every
 *  index its pixels use has an entry in its table, whatever the file held.
 *
 *  Frames are clipped to the screen, as browsers do; one wholly outside becomes a single undrawn pixel, which
 *  keeps its delay and disposes of nothing. The first frame must lie inside: browsers let it enlarge the
 *  screen, other players clip it, so nothing else that were written would look the same in all of them. */
class NvGIFFrameReader {
public:
    /** Opens the file and checks every frame's record.
     *
     *  @param inCommentLimit bytes that the file's comments may take; 2 is raised beyond, since they are kept
     *                        from the moment the file is opened
     *  @throws NvErrorCode  32 when the file cannot be opened (the system's error number is kept) or is no
     *  GIF; 29 when it is too large, 33, 28 and 18 for other files that are not well-formed GIFs, 28 also for
     *  one without frames */
    NvGIFFrameReader(const char* inPath, std::uint64_t inCommentLimit);

    std::uint32_t GetFrameCount() const { return mFile.GetNumberOfFrames(); }
    std::uint32_t GetScreenWidth() const { return mFile.GetScreenWidth(); }
    std::uint32_t GetScreenHeight() const { return mFile.GetScreenHeight(); }
    std::shared_ptr<NvGIFGlobalInfo> ShareGlobalInfo() const { return mFile.GetGlobalInfo(); }

    /** Whether a frame before the last puts back what it covered, so that another one shows it. */
    bool AnyFrameRestores() const { return mAnyFrameRestores; }
    /** Whether a frame is cleared when its time is over. */
    bool AnyFrameClears() const { return mAnyFrameClears; }

    /** Pixels of all frames together, and of the largest one, as far as they lie on the screen. */
    std::uint64_t GetPixelsOfAllFrames() const { return mPixelsOfAllFrames; }
    std::uint64_t GetPixelsOfLargestFrame() const { return mPixelsOfLargestFrame; }

    /** Pixels that reading all frames decodes at most, with those beyond the screen. */
    std::uint64_t GetPixelsToDecode() const;

    /** Bytes of the file. */
    std::uint32_t GetLength() const { return mFile.GetLength(); }

    /** As many colours as all frames together can show, each counted for each frame. */
    std::uint64_t GetColorsOfAllFrames() const { return mColorsOfAllFrames; }

    /** Bytes that the file's comments take. */
    std::uint64_t GetCommentMemory() const { return mFile.GetCommentMemory(); }

    /** Bytes that reading one frame after another onto a canvas needs at the same time, at most. */
    std::uint64_t EstimatePlayMemory() const;

    /** @throws NvErrorCode  28 and 18 for corrupt image data, undefined codes included; 2 */
    std::unique_ptr<NvGIFFrame> ReadFrame(std::uint32_t inIndex);

    /** Reads a frame straight onto a canvas, row by row, which takes a fraction of time and memory, and loses
     *  no colour where missing pixels would have taken a full table's entry.
     *  @return             its record, valid until the next frame is read
     *  @throws NvErrorCode as ReadFrame */
    const NvGIFFrameInfo& PlayFrame(std::uint32_t inIndex, NvGIFPlayer& ioPlayer);

    /** The damage met first, also when it was raised; undefined codes before all others. */
    const NvGIFDamage& GetDamage() const { return mDamage; }

private:
    void Open(const char* inPath);
    void CheckFrames();
    bool ClipToScreen(NvGIFFrameInfo& ioInfo) const;
    template <typename Begin, typename TakeRow>
    void ReadRows(std::uint32_t inIndex, const Begin& inBegin, const TakeRow& inTakeRow);

    NvGIFFile mFile;
    NvGIFFrameInfo mClipped; // the part on the screen of the frame read last
    NvGIFDamage mDamage;
    std::uint64_t mDeclaredPixels = 0; // of all frames shown
    std::uint64_t mPixelsOfAllFrames = 0;
    std::uint64_t mPixelsOfLargestFrame = 0;
    std::uint64_t mColorsOfAllFrames = 0; // as many as can differ
    bool mAnyFrameRestores = false;       // but for the last
    bool mAnyFrameClears = false;
};
