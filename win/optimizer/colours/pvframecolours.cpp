#include "win/optimizer/colours/pvframecolours.h"

#include <numeric>

#include "nvcode2/gif/nvgifframe.h"

PvFrameColours::PvFrameColours(const NvGIFFrame& inFrame)
    : mTable(inFrame.GetImage().GetColorTable()), mHistogram(PvDrawnHistogram(inFrame)) {
    std::iota(mMap.begin(), mMap.end(), std::uint8_t{0});
}

double PvFrameColours::Replace(const NvIndexMap& inMap, const NvColorTable& inTable) {
    const double error = NvMeanRemapError(mTable, mHistogram.data(), inMap, inTable);
    mHistogram = PvMapHistogram(mHistogram, inMap);
    for (std::uint8_t& entry : mMap)
        entry = inMap[entry];
    mTable = inTable;
    return error;
}
