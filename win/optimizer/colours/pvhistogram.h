#pragma once

#include <array>
#include <cstdint>

#include "nvcode2/gif/nvgifframe.h"
#include "nvcode2/quant/nvquantremap.h"

/** Drawn pixels per entry of a frame's colour table. */
using PvHistogram = NvGIFFrame::Histogram;

inline PvHistogram PvDrawnHistogram(const NvGIFFrame& inFrame) {
    PvHistogram histogram{};
    if (inFrame.GetImage().GetColorTable().GetSize() > 0)
        inFrame.GetImage().BuildMaskedHistogram(histogram.data(), &inFrame.GetMask());
    return histogram;
}

/** The same once indices are mapped. */
inline PvHistogram PvMapHistogram(const PvHistogram& inHistogram, const NvIndexMap& inMap) {
    PvHistogram mapped{};
    for (std::size_t i = 0; i < inHistogram.size(); ++i)
        mapped[inMap[i]] += inHistogram[i];
    return mapped;
}
