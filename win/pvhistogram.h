#pragma once

#include <array>
#include <cstdint>

#include "nvcode2/nvgifframe.h"

/** Drawn pixels per entry of a frame's colour table. */
using PvHistogram = std::array<std::uint32_t, 256>;

inline PvHistogram PvDrawnHistogram(const NvGIFFrame& inFrame) {
    PvHistogram histogram{};
    if (inFrame.GetImage().GetColorTable().GetSize() > 0)
        inFrame.GetImage().BuildMaskedHistogram(histogram.data(), &inFrame.GetMask());
    return histogram;
}
