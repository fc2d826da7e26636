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

/** A still GIF that shows what is in many: of each file the first, the middle and the last displayed frame,
 *  side by side.
 *
 *  Files fill the sheet row by row from the top left, in the order in which they were added, in as few
 *  columns as keep it from growing tall. A still picture takes only the first of its three places, an
 *  animation of two frames the first and the last. */
class PvContactSheet {
public:
    /** @param inMemoryLimit  bytes that the sheet and a file on its way to it may need; 0: the usual limit
     *  @param inIndicator    hears of every frame and may stop the work with code 3; borrowed, may be null */
    explicit PvContactSheet(std::uint64_t inMemoryLimit = 0, NvProgressIndicator* inIndicator = nullptr);

    /** Puts a file on the sheet, playing it from its first frame to its last. After an error nothing of it is
     *  there.
     *
     *  @throws NvErrorCode  those of NvGIFFrameReader; 2 when memory is out, or the sheet as large as a GIF
     * may be; 3 */
    void AddFile(const char* inPath);

    std::uint32_t GetFileCount() const { return static_cast<std::uint32_t>(mFiles.size()); }

    /** How many files lie beside each other. */
    std::uint32_t GetColumnCount() const;

    /** Writes the sheet. Precondition: GetFileCount() is not 0.
     *
     *  @param inPath        created or replaced
     *  @throws NvErrorCode  those of NvFile, what is at inPath is then not a whole file; 2; 3 */
    void Write(const char* inPath) const;

private:
    static constexpr std::uint32_t km_Places = 3;

    /** Thumbnails of one size by place; one without pixels leaves its place empty. */
    using File = std::array<NvRGBImage, km_Places>;

    /** Files beside each other, and the pixels that the tallest of them takes. */
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
