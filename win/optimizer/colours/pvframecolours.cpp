#include "win/optimizer/colours/pvframecolours.h"

#include <numeric>

namespace {

PvHistogram CountDrawnPixels(const NvGIFFrame& inFrame) {
    PvHistogram histogram{};
    if (inFrame.GetImage().GetColorTable().GetSize() > 0)
        inFrame.GetImage().BuildMaskedHistogram(histogram.data(), &inFrame.GetMask());
    return histogram;
}

} // namespace

PvHistogram PvMapHistogram(const PvHistogram& inHistogram, const NvIndexMap& inMap) {
    PvHistogram mapped{};
    for (std::size_t i = 0; i < inHistogram.size(); ++i)
        mapped[inMap[i]] += inHistogram[i];
    return mapped;
}

PvFrameColours::PvFrameColours(const NvGIFFrame& inFrame)
    : mTable(inFrame.GetImage().GetColorTable()), mHistogram(CountDrawnPixels(inFrame)) {
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
