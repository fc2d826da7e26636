#include "win/optimizer/base/pvmemory.h"

#include <algorithm>

#include "nvcode2/gif/nvgifframereader.h"
#include "nvcode2/quant/nvquantoctree.h"

namespace {

/** What a file has, in numbers of pixels and bytes. */
struct Shape {
    std::uint64_t mScreen = 0;
    std::uint64_t mLargest = 0; // of the frames that the steps have in hand
    std::uint64_t mCanvas = 0;  // bytes of one, see NvGIFCanvas
    bool mRestores = false;
    bool mClears = false;
    bool mIsStill = false;
};

Shape ShapeOf(const NvGIFFrameReader& inFile) {
    const std::uint64_t colours = inFile.GetColorsOfAllFrames();
    Shape shape;
    shape.mScreen = std::uint64_t{inFile.GetScreenWidth()} * inFile.GetScreenHeight();
    shape.mRestores = inFile.AnyFrameRestores();
    shape.mClears = inFile.AnyFrameClears();
    shape.mLargest = shape.mRestores ? shape.mScreen : inFile.GetPixelsOfLargestFrame();
    shape.mCanvas = shape.mScreen * (colours < 256 ? 1 : colours < 65536 ? 2 : 4);
    shape.mIsStill = inFile.GetFrameCount() == 1;
    return shape;
}

/** Of pixels with a mask. */
std::uint64_t FrameMemory(std::uint64_t inPixels) {
    return inPixels + inPixels / 8;
}

/** Frames flattened and cropped, what they add to the screen found. */
std::uint64_t MemoryToRebuild(const Shape& inShape, std::uint64_t inLargestRead) {
    const std::uint64_t inHand = FrameMemory(inLargestRead) + FrameMemory(inShape.mLargest);
    if (inShape.mIsStill)
        return inHand;
    const std::uint64_t differences = 4 * inShape.mScreen + inShape.mLargest;
    const std::uint64_t flattening =
        inShape.mRestores ? 2 * inShape.mCanvas + 4 * inShape.mScreen + 3 * inShape.mLargest : 0;
    const std::uint64_t coverage = inShape.mRestores ? 2 : inShape.mClears ? 3 : 0;
    return inHand + differences + flattening + coverage * inShape.mScreen;
}

/** Undrawn pixels settled, pixels exchanged. */
std::uint64_t MemoryToWrite(const Shape& inShape) {
    const std::uint64_t filling = inShape.mIsStill ? 0 : 2 * inShape.mScreen + 3 * inShape.mLargest;
    return FrameMemory(inShape.mLargest) + inShape.mLargest + filling;
}

/** Both files played, and what each pixel showed before where pixels changed places. */
std::uint64_t MemoryToCompare(const Shape& inShape) {
    return (inShape.mRestores ? 3 : 2) * inShape.mCanvas + 4 * inShape.mScreen + inShape.mScreen / 4;
}

} // namespace

std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile) {
    constexpr std::uint64_t km_Least = 14 << 20;     // the program itself
    constexpr std::uint64_t km_PerFrame = 4096;      // records, tables and counts of its colours
    constexpr std::uint64_t km_PerCanvasColour = 64; // with its number and its error
    constexpr std::uint64_t km_MostNumbered = 1 << 16;
    constexpr std::uint64_t km_CommentCopies = 6; // loaded, to be written, and twice each when compared
    const Shape shape = ShapeOf(inFile);
    const std::uint64_t colours = inFile.GetColorsOfAllFrames();
    const std::uint64_t steps = std::max({MemoryToRebuild(shape, inFile.GetPixelsOfLargestFrame()),
                                          MemoryToWrite(shape), MemoryToCompare(shape)});
    return km_Least + steps + inFile.GetFrameCount() * km_PerFrame +
           km_CommentCopies * inFile.GetCommentMemory() +
           std::min(colours, km_MostNumbered) * km_PerCanvasColour + NvQuantOctree::EstimateMemory(colours);
}
