#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "nvcode2/gif/nvlzwstrings.h"

class NvAnimation;
class NvGIFFrame;

/** A frame ready to be written, its tables final. */
struct PvFinishedFrame {
    std::unique_ptr<NvGIFFrame> mFrame;
    const NvLZWStrings* mStrings = nullptr; ///< how it is cut, valid up to the next frame; null: as usual
};

/** Makes a frame of an animation ready. */
using PvFrameFinisher = std::function<PvFinishedFrame(std::uint32_t inIndex)>;

/** Writes an animation as a GIF file.
 *
 *  Frames get a graphic control extension when their delay, disposal, transparency or user input needs one;
 *  the disposal of a still picture means nothing and needs none. The version is "89a" when anything in the
 *  file requires it.
 *
 *  @param inPath     created or replaced
 *  @param inFinish   called for each frame in order, after those before it have been written
 *  @return           the file's length in bytes
 *  @throws NvErrorCode  those of NvFile and of inFinish; what is at inPath is then not a whole file */
std::uint32_t WriteOptimizedGIF(const char* inPath, NvAnimation& ioAnimation,
                                const PvFrameFinisher& inFinish);
