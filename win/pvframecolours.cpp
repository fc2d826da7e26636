#include "win/pvframecolours.h"

#include <numeric>
#include <utility>

#include "nvcode2/nvgifframe.h"

PvFrameColours::PvFrameColours(const NvGIFFrame& inFrame)
    : mTable(inFrame.GetImage().GetColorTable()), mHistogram(PvDrawnHistogram(inFrame)) {
    std::iota(mMap.begin(), mMap.end(), std::uint8_t{0});
}

double PvFrameColours::Replace(const NvIndexMap& inMap, const NvColorTable& inTable) {
    const double error = NvMeanRemapError(mTable, mHistogram.data(), inMap, inTable);
    const PvHistogram old = std::exchange(mHistogram, PvHistogram{});
    for (std::size_t i = 0; i < old.size(); ++i)
        mHistogram[inMap[i]] += old[i];
    for (std::uint8_t& entry : mMap)
        entry = inMap[entry];
    mTable = inTable;
    return error;
}
