#include "win/optimizer/look/pvlookcost.h"

#include <algorithm>
#include <cmath>

#include "nvcode2/gif/nvgifframe.h"
#include "win/optimizer/look/pvlook.h"

namespace {

constexpr double km_SizePerSimilarity = 4.0;
constexpr double km_SizePerBanding = 0.3; // by eye, on drawn skies, glows and shadows
constexpr double km_SizeThatHardlyCounts = 4096.0;

} // namespace

double PvLookCost(double inBytes, double inSimilarity, double inBanding) {
    return std::log(inBytes + km_SizeThatHardlyCounts) - km_SizePerSimilarity * inSimilarity +
           km_SizePerBanding * inBanding;
}

double PvSizeAtLookCost(double inCost, double inSimilarity) {
    return std::max(0.0, std::exp(inCost + km_SizePerSimilarity * inSimilarity) - km_SizeThatHardlyCounts);
}

double PvFrameSimilarity(const NvGIFFrame& inFrame, const NvIndexedImage& inOther) {
    return PvLookMeter(inFrame.GetWidth(), inFrame.GetHeight(), true).Measure(inFrame, inOther).mSsim;
}
