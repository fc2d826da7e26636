#include "nvcode2/quant/nvquantremap.h"

#include <cstdlib>

#include "nvcode2/base/nvassert.h"

namespace {

std::uint8_t NearestFlagged(const NvColorTable& inTarget, const NvColorFlags& inFlags,
                            const NvColor& inColor) {
    std::uint32_t nearest = 0;
    std::uint32_t leastDistance = UINT32_MAX;
    for (std::uint32_t i = 0; i < inTarget.GetSize() && leastDistance > 0; ++i) {
        if (!inFlags[i])
            continue;
        const std::uint32_t distance = NvColorTable::ColorDistance(&inTarget.GetColor(i), &inColor);
        if (distance < leastDistance) {
            leastDistance = distance;
            nearest = i;
        }
    }
    return static_cast<std::uint8_t>(nearest);
}

} // namespace

NvIndexMap NvMakeRemap(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                       const NvColorTable& inTarget, const NvColorFlags* inFlags) {
    NvAssert(1 <= inTarget.GetSize() && inTarget.GetSize() <= 256);
    NvColorFlags all;
    all.fill(true);
    NvIndexMap map{};
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i)
        if (inHistogram[i] != 0)
            map[i] = NearestFlagged(inTarget, inFlags ? *inFlags : all, inTable.GetColor(i));
    return map;
}

double NvMeanRemapError(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                        const NvIndexMap& inMap, const NvColorTable& inTarget) {
    std::uint64_t error = 0;
    std::uint64_t pixels = 0;
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i) {
        if (inHistogram[i] == 0)
            continue;
        const NvColor& from = inTable.GetColor(i);
        const NvColor& to = inTarget.GetColor(inMap[i]);
        const int difference =
            std::abs(from.red - to.red) + std::abs(from.green - to.green) + std::abs(from.blue - to.blue);
        error += std::uint64_t{inHistogram[i]} * static_cast<std::uint64_t>(difference);
        pixels += inHistogram[i];
    }
    return pixels == 0 ? 0.0 : static_cast<double>(error) / (3.0 * static_cast<double>(pixels));
}

void NvQuantRemap(NvIndexedImage& ioImage, const NvIndexMap& inMap, const NvColorTable& inTarget) {
    ioImage.RemapIndices(inMap.data());
    ioImage.GetColorTable() = inTarget;
}
