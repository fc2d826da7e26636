#include "win/pvlookcost.h"

#include <algorithm>
#include <cmath>

#include "nvcode2/nvgifframe.h"
#include "nvcode2/nvgifplayer.h"
#include "win/pvlook.h"

namespace {

constexpr double km_SizePerSimilarity = 4.0;
constexpr double km_SizeThatHardlyCounts = 4096.0;

} // namespace

double PvLookCost(double inBytes, double inSimilarity) {
    return std::log(inBytes + km_SizeThatHardlyCounts) - km_SizePerSimilarity * inSimilarity;
}

double PvSizeAtLookCost(double inCost) {
    return std::max(0.0, std::exp(inCost + km_SizePerSimilarity) - km_SizeThatHardlyCounts);
}

double PvFrameSimilarity(const NvGIFFrame& inFirst, const NvGIFFrame& inSecond) {
    NvGIFPlayer first(inFirst.GetWidth(), inFirst.GetHeight());
    NvGIFPlayer second(inFirst.GetWidth(), inFirst.GetHeight());
    first.ShowAlone(inFirst);
    second.ShowAlone(inSecond);
    return PvLookMeter(inFirst.GetWidth(), inFirst.GetHeight()).Measure(first, second).mSsim;
}
