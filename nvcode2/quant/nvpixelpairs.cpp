#include "nvcode2/quant/nvpixelpairs.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace {

int ChannelStrength(const NvColor* const inNeighbours[8], std::uint8_t NvColor::*inChannel) {
    const auto at = [&](int inPlace) { return int{inNeighbours[inPlace]->*inChannel}; };
    enum { NW, N, NE, W, E, SW, S, SE };
    const int vertical = 2 * (at(N) - at(S)) + at(NW) + at(NE) - at(SW) - at(SE);
    const int horizontal = 2 * (at(E) - at(W)) + at(NE) + at(SE) - at(NW) - at(SW);
    return std::min(std::abs(vertical) + std::abs(horizontal), 255);
}

} // namespace

std::uint32_t EdgeStrength(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors) {
    const std::uint8_t* above = inPixel - inStride;
    const std::uint8_t* below = inPixel + inStride;
    const NvColor* const neighbours[8] = {
        &inColors[above[-1]],  &inColors[above[0]],  &inColors[above[1]], &inColors[inPixel[-1]],
        &inColors[inPixel[1]], &inColors[below[-1]], &inColors[below[0]], &inColors[below[1]],
    };
    const int red = ChannelStrength(neighbours, &NvColor::red);
    const int green = ChannelStrength(neighbours, &NvColor::green);
    const int blue = ChannelStrength(neighbours, &NvColor::blue);
    return static_cast<std::uint32_t>(std::max({red, green, blue}));
}

bool ColoursClose(const NvColor& inColor1, const NvColor& inColor2) {
    const auto isClose = [](int inLeft, int inRight) {
        return static_cast<unsigned>(inLeft - inRight + 128) < 257U;
    };
    return isClose(inColor1.red, inColor2.red) && isClose(inColor1.green, inColor2.green) &&
           isClose(inColor1.blue, inColor2.blue);
}

// Cheapest tests first: in real pictures nearly every place fails the first one.
bool NvIsSwappablePair(const std::uint8_t* inPixel, std::uint32_t inStride, const NvColor* inColors,
                       std::int32_t inSparedIndex) {
    const std::uint8_t a = inPixel[0];
    const std::uint8_t b = inPixel[1];
    if (inPixel[2] != a || b == a || inPixel[-1] == a)
        return false;
    if (a == inSparedIndex || b == inSparedIndex)
        return false;
    return ColoursClose(inColors[a], inColors[b]) &&
           EdgeStrength(inPixel, inStride, inColors) < km_EdgeThreshold &&
           EdgeStrength(inPixel + 1, inStride, inColors) < km_EdgeThreshold;
}
