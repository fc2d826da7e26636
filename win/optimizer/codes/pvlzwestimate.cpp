#include "win/optimizer/codes/pvlzwestimate.h"

#include <algorithm>

#include "nvcode2/gif/nvgiffile.h"
#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvinterlace.h"

std::uint64_t PvLZWEstimator::EstimateLZWSize(const std::uint8_t* inPixels, std::uint32_t inWidth,
                                              std::uint32_t inHeight, std::uint32_t inStride,
                                              std::uint32_t inColorCount, bool inInterlaced) {
    const std::uint32_t pixelBits = std::max<std::uint32_t>(NvGIFMinimumCodeSize(inColorCount), 2);
    mParser.Begin(pixelBits);
    std::uint64_t misses = 0;
    bool hasStarted = false;
    NvForEachRowInFileOrder(inHeight, inInterlaced, [&](std::uint32_t y) {
        const std::uint8_t* row = inPixels + std::size_t{y} * inStride;
        std::uint32_t next = 0;
        if (!hasStarted && inWidth > 0)
            mParser.Start(row[next++]);
        hasStarted = true;
        while (mParser.Read(row, inWidth, next)) {
            misses += mParser.GetCapacity();
            mParser.Start(row[next++]);
        }
    });
    return PvLZWBits(pixelBits, misses + mParser.GetState().mMisses);
}

std::uint64_t PvLZWEstimator::EstimateImage(const NvIndexedImage& inImage, bool inInterlaced) {
    const NvConstPixelLock pixels(inImage);
    return EstimateLZWSize(pixels.Row(0), inImage.GetWidth(), inImage.GetHeight(), inImage.GetRowBytes(),
                           inImage.GetColorTable().GetSize(), inInterlaced);
}

std::uint64_t PvLZWEstimator::EstimateFrame(const NvGIFFrame& inFrame) {
    return EstimateImage(inFrame.GetImage(), inFrame.GetInfo().mInterlaced != 0);
}
