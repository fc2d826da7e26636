#include "win/optimizer/base/pvmemory.h"

#include <algorithm>

#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/quant/nvquantoctree.h"

std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile) {
    constexpr std::uint64_t km_PerFrame = 8192; // tables, records and bookkeeping
    constexpr std::uint64_t km_PerScreenPixel =
        20; // two canvases with what they restore, differencing, coverage
    constexpr std::uint64_t km_PerCanvasColor = 128; // counting and looking up what a restored canvas shows
    constexpr std::uint64_t km_CommentCopies =
        6; // loaded, to be written, and twice each in the two files that the gate plays
    const bool restores = inFile.AnyFrameRestores();
    const std::uint64_t screen = std::uint64_t{inFile.GetScreenWidth()} * inFile.GetScreenHeight();
    const std::uint64_t frames = restores ? screen * inFile.GetFrameCount() : inFile.GetPixelsOfAllFrames();
    const std::uint64_t largest = restores ? screen : inFile.GetPixelsOfLargestFrame();
    const std::uint64_t canvasColors = restores ? std::min(screen, inFile.GetColorsOfAllFrames()) : 0;
    const std::uint64_t colors =
        restores ? 256 * std::uint64_t{inFile.GetFrameCount()} : inFile.GetColorsOfAllFrames();
    return frames + frames / 8 + inFile.GetFrameCount() * km_PerFrame + 4 * largest +
           screen * km_PerScreenPixel + km_CommentCopies * inFile.GetCommentMemory() +
           canvasColors * km_PerCanvasColor + NvQuantOctree::EstimateMemory(colors);
}
