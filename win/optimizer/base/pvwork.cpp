#include "win/optimizer/base/pvwork.h"

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/gif/nvgifframereader.h"

std::uint64_t PvWorkOfReading(const NvGIFFrameReader& inFile) {
    constexpr std::uint64_t km_PerPixel = 3;
    constexpr std::uint64_t km_DecodedPixelsPerUnit = 3; // beyond the screen
    constexpr std::uint64_t km_PerByte = 20;
    constexpr std::uint64_t km_PerFrame = 6000;
    constexpr std::uint64_t km_PerColour = 250;
    constexpr std::uint64_t km_PerScreenPixel = 4;
    return inFile.GetPixelsOfAllFrames() * km_PerPixel +
           inFile.GetPixelsToDecode() / km_DecodedPixelsPerUnit + inFile.GetLength() * km_PerByte +
           inFile.GetFrameCount() * km_PerFrame + inFile.GetColorsOfAllFrames() * km_PerColour +
           std::uint64_t{inFile.GetScreenWidth()} * inFile.GetScreenHeight() * km_PerScreenPixel;
}

std::uint64_t PvWorkOnFrame(const NvGIFFrame& inFrame) {
    constexpr std::uint64_t km_PerPixel = 5;
    return std::uint64_t{inFrame.GetWidth()} * inFrame.GetHeight() * km_PerPixel;
}
