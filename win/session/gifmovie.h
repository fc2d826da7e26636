#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "nvcode2/gif/nvgifplayer.h"

class NvGIFFrameReader;

/** A GIF file that plays in an endless loop, a frame at a time, for display. Reads the file as it plays, so
 *  that only one frame and the canvas are in memory. */
class GIFMovie {
public:
    /** Shows the first frame.
     *  @param inMemoryLimit  bytes that it may need
     *  @throws NvErrorCode   those of NvGIFFrameReader, 2 */
    explicit GIFMovie(std::string inPath, std::uint64_t inMemoryLimit);
    ~GIFMovie();

    /** Shows the next frame; after the last comes the first on an empty canvas.
     *  @throws NvErrorCode  those of NvGIFFrameReader */
    void Advance();

    const NvGIFPlayer& GetCanvas() const { return *mCanvas; }
    std::uint32_t GetFrameCount() const;
    std::uint32_t GetFrameIndex() const { return mFrame; }

    /** Milliseconds for which the current frame is shown. As in browsers, delays below 20 become 100. */
    std::uint32_t GetDelay() const { return mDelay; }

private:
    void Show(std::uint32_t inFrame);

    std::string mPath;
    std::unique_ptr<NvGIFFrameReader> mReader;
    std::unique_ptr<NvGIFPlayer> mCanvas;
    std::uint32_t mFrame = 0;
    std::uint32_t mDelay = 0;
};
