#include "win/optimizer/frames/pvflatten.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>
#include <utility>
#include <vector>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvquantoctree.h"

namespace {

using ColorCounts = std::unordered_map<NvGIFPlayer::Pixel, std::uint32_t>;
using ColorIndices = std::unordered_map<NvGIFPlayer::Pixel, std::uint8_t>;

ColorCounts CountColors(const NvGIFPlayer& inPlayer) {
    ColorCounts counts;
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y) {
        const std::vector<NvGIFPlayer::Pixel> row = inPlayer.ReadRow(y);
        std::uint32_t x = 0;
        while (x < inPlayer.GetScreenWidth()) {
            const std::uint32_t start = x;
            while (x < inPlayer.GetScreenWidth() && row[x] == row[start])
                ++x;
            counts[row[start]] += x - start;
        }
    }
    return counts;
}

/** The canvas's colours in a table, and the entry that shows each. */
struct CanvasPalette {
    NvColorTable mTable;
    ColorIndices mIndices;
    double mMeanError = 0.0; // per channel
};

CanvasPalette MakePalette(const ColorCounts& inCounts) {
    const bool hasUndrawn = inCounts.contains(0);
    NvQuantOctree octree(hasUndrawn ? 255 : 256);
    for (const auto& [pixel, count] : inCounts)
        if (pixel != 0)
            octree.AddColor(NvUnpackColor(pixel), count);

    CanvasPalette palette;
    palette.mTable = octree.MakeTable();
    std::uint64_t error = 0;
    std::uint64_t drawn = 0;
    for (const auto& [pixel, count] : inCounts) {
        if (pixel == 0)
            continue;
        const NvColor color = NvUnpackColor(pixel);
        const std::uint32_t index = palette.mTable.FindClosestColor(NvPackColor(color), -1);
        palette.mIndices[pixel] = static_cast<std::uint8_t>(index);
        const NvColor& shown = palette.mTable.GetColor(index);
        const int difference = std::abs(color.red - shown.red) + std::abs(color.green - shown.green) +
                               std::abs(color.blue - shown.blue);
        error += static_cast<std::uint64_t>(difference) * count;
        drawn += count;
    }
    palette.mIndices[0] = 0;
    if (drawn > 0)
        palette.mMeanError = static_cast<double>(error) / (3.0 * static_cast<double>(drawn));
    return palette;
}

std::unique_ptr<NvGIFFrame> MakeFrame(const NvGIFPlayer& inPlayer, const CanvasPalette& inPalette,
                                      const NvGIFFrameInfo& inOldInfo) {
    const std::uint32_t width = inPlayer.GetScreenWidth();
    const std::uint32_t height = inPlayer.GetScreenHeight();
    NvIndexedImage image(width, height, inPalette.mTable);
    NvBitmapImage mask(width, height);
    {
        const NvPixelLock pixels(image);
        const NvPixelLock bits(mask);
        NvGIFPlayer::Pixel lastPixel = 0;
        std::uint8_t lastIndex = 0;
        for (std::uint32_t y = 0; y < height; ++y) {
            const std::vector<NvGIFPlayer::Pixel> row = inPlayer.ReadRow(y);
            for (std::uint32_t x = 0; x < width; ++x) {
                if (row[x] != lastPixel) {
                    lastPixel = row[x];
                    lastIndex = inPalette.mIndices.at(lastPixel);
                }
                pixels.Row(y)[x] = lastIndex;
                if (lastPixel != 0)
                    NvBitmapImage::SetBit(bits.Row(y), mask.GetRowBytes(), x, 0, 1);
            }
        }
    }
    auto info = std::make_unique<NvGIFFrameInfo>(inOldInfo);
    info->mLeft = info->mTop = 0;
    info->mWidth = static_cast<std::uint16_t>(width);
    info->mHeight = static_cast<std::uint16_t>(height);
    info->mHasLocalTable = 1;
    info->mColorTable = inPalette.mTable;
    info->mDisposal = NvGIFFrameInfo::km_DisposeLeave;
    auto frame = std::make_unique<NvGIFFrame>(std::move(image), std::move(mask), std::move(info));
    frame->UpdateTransparency(nullptr, 256);
    return frame;
}

} // namespace

std::unique_ptr<NvGIFFrame> PvFlattener::Flatten(const NvGIFFrame& inFrame) {
    mPlayer.ShowFrame(inFrame);
    const CanvasPalette palette = MakePalette(CountColors(mPlayer));
    mWorstError = std::max(mWorstError, palette.mMeanError);
    return MakeFrame(mPlayer, palette, inFrame.GetInfo());
}

bool PvIsCoveredBy(const NvGIFFrame& inFrame, const NvGIFFrame& inNext) {
    const NvConstPixelLock first(inFrame.GetMask());
    const NvConstPixelLock second(inNext.GetMask());
    const std::uint32_t rowBytes = inFrame.GetMask().GetRowBytes();
    for (std::uint32_t y = 0; y < inFrame.GetHeight(); ++y)
        for (std::uint32_t i = 0; i < rowBytes; ++i)
            if (first.Row(y)[i] & ~second.Row(y)[i])
                return false;
    return true;
}
