#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "nvcode2/gif/nvthumbnail.h"
#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/image/nvrgbimage.h"

class NvProgressIndicator;
class NvGIFFrameReader;

/** A still GIF that shows many files at a glance: the first, middle and last displayed frame of each, side by
 *  side.
 *
 *  Files fill the sheet row by row from the top left, in the order in which they were added, in the fewest
 *  columns that keep the sheet from growing taller than one and a half times its width. A still picture takes
 *  only the first of its three places, an animation of two frames the first and the last. */
class PvContactSheet {
public:
    /** @param inMemoryLimit  bytes that the sheet and a file on its way to it may need; 0: the usual limit
     *  @param inIndicator    called for every frame, may stop the work with code 3; borrowed, may be null */
    explicit PvContactSheet(std::uint64_t inMemoryLimit = 0, NvProgressIndicator* inIndicator = nullptr);

    /** Puts a file on the sheet, played from its first frame to its last. After an error the sheet is as it
     *  was.
     *
     *  @throws NvErrorCode  those of NvGIFFrameReader; 2 when memory runs out or the sheet would be larger
     *  than a GIF may be; 3 */
    void AddFile(const char* inPath);

    std::uint32_t GetFileCount() const { return static_cast<std::uint32_t>(mFiles.size()); }

    /** The number of files in a row. */
    std::uint32_t GetColumnCount() const;

    /** Writes the sheet. Precondition: GetFileCount() is not 0.
     *
     *  @param inPath        created or replaced
     *  @throws NvErrorCode  those of NvFile, after which the file at inPath is not whole; 2; 3 */
    void Write(const char* inPath) const;

private:
    static constexpr std::uint32_t km_Places = 3;

    /** Thumbnails of one size by place; one without pixels leaves its place empty. */
    using File = std::array<NvRGBImage, km_Places>;

    /** The files of a row, and the height of the tallest in pixels, padding included. */
    struct Row {
        std::span<const File> mFiles;
        std::uint32_t mHeight;
    };

    void CheckMemory(const NvGIFFrameReader& inReader) const;
    File Play(NvGIFFrameReader& ioReader) const;
    std::vector<Row> MakeRows() const;
    NvRGBImage MakePage() const;
    NvIndexedImage Quantize(const NvRGBImage& inPage) const;

    std::uint64_t mMemoryLimit;
    NvProgressIndicator* mIndicator;
    NvThumbnail mThumbnail;
    std::vector<File> mFiles;
    std::uint64_t mPixels = 0; // of all thumbnails
};
