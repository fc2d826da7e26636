#include "nvcode2/quant/nvquantselector.h"

#include <algorithm>

#include "nvcode2/base/nvassert.h"

namespace {

struct Neighbour {
    std::uint32_t mIndex;
    std::uint32_t mDistance = UINT32_MAX;
};

/** The flagged entry nearest to an entry, itself excepted; the lowest of equally near ones. */
Neighbour NearestOther(const NvColorTable& inShared, const NvColorFlags& inFlags, std::uint32_t inIndex) {
    Neighbour nearest{inIndex};
    for (std::uint32_t i = 0; i < inShared.GetSize(); ++i) {
        if (i == inIndex || !inFlags[i])
            continue;
        const std::uint32_t distance =
            NvColorTable::ColorDistance(&inShared.GetColor(inIndex), &inShared.GetColor(i));
        if (distance < nearest.mDistance)
            nearest = {i, distance};
    }
    return nearest;
}

} // namespace

NvColorFlags NvQuantSelector(const NvColorTable& inTable, const std::uint32_t* inHistogram,
                             const NvColorTable& inShared, std::uint32_t inMaxColors) {
    NvAssert(inShared.GetSize() >= 1 && inMaxColors >= 1);
    std::array<std::uint64_t, 256> pixels{}; // that each shared entry stands for
    NvColorFlags flags{};
    std::uint32_t picked = 0;
    for (std::uint32_t i = 0; i < inTable.GetSize(); ++i) {
        if (inHistogram[i] == 0)
            continue;
        const std::uint32_t nearest = inShared.FindClosestColor(NvPackColor(inTable.GetColor(i)), -1);
        pixels[nearest] += inHistogram[i];
        picked += flags[nearest] ? 0 : 1;
        flags[nearest] = true;
    }
    if (picked == 0)
        flags[0] = true;

    std::array<Neighbour, 256> heirs{};
    for (std::uint32_t i = 0; picked > inMaxColors && i < inShared.GetSize(); ++i)
        if (flags[i])
            heirs[i] = NearestOther(inShared, flags, i);
    for (; picked > inMaxColors; --picked) {
        std::uint32_t cheapest = 0;
        double leastError = -1.0;
        for (std::uint32_t i = 0; i < inShared.GetSize(); ++i) {
            if (!flags[i])
                continue;
            const double error = static_cast<double>(pixels[i]) * heirs[i].mDistance;
            if (leastError < 0 || error < leastError) {
                leastError = error;
                cheapest = i;
            }
        }
        flags[cheapest] = false;
        pixels[heirs[cheapest].mIndex] += pixels[cheapest];
        for (std::uint32_t i = 0; i < inShared.GetSize(); ++i)
            if (flags[i] && heirs[i].mIndex == cheapest)
                heirs[i] = NearestOther(inShared, flags, i);
    }
    return flags;
}
