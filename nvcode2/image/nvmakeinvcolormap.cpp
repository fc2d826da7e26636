#include "nvcode2/image/nvmakeinvcolormap.h"

#include <array>
#include <cstddef>
#include <limits>

#include "nvcode2/base/nvassert.h"

namespace {

constexpr std::uint32_t km_CellsPerAxis = 32;

/** The colour a cell stands for. */
NvColor CellColor(std::uint32_t inRed, std::uint32_t inGreen, std::uint32_t inBlue) {
    return {static_cast<std::uint8_t>(inRed * 8 + inRed / 4),
            static_cast<std::uint8_t>(inGreen * 8 + inGreen / 4),
            static_cast<std::uint8_t>(inBlue * 8 + inBlue % 8)};
}

constexpr std::int32_t SquaredDifference(std::int32_t inLeft, std::int32_t inRight) {
    return (inLeft - inRight) * (inLeft - inRight);
}

/** One number for each cell of a row: the cells that differ in blue alone. */
using Row = std::array<std::int32_t, km_CellsPerAxis>;

/** For each blue of a palette entry, what it adds to the entry's distance from each cell of a row. */
std::array<Row, 256> MakeBlueDistances() {
    std::array<Row, 256> distances;
    for (std::uint32_t blue = 0; blue < distances.size(); ++blue)
        for (std::uint32_t cell = 0; cell < km_CellsPerAxis; ++cell)
            distances[blue][cell] =
                SquaredDifference(CellColor(0, 0, cell).blue, static_cast<std::int32_t>(blue));
    return distances;
}

} // namespace

void MakeInverseColorMap(const NvColorTable* inTablePtr, std::uint8_t* outInvMap) {
    NvAssert(inTablePtr && outInvMap);
    const std::uint32_t nTableColors = inTablePtr->GetSize();
    NvAssert(nTableColors);
    const NvColor* const colors = inTablePtr->GetColors();
    const std::array<Row, 256> blueDistances = MakeBlueDistances();
    for (std::uint32_t row = 0; row < km_CellsPerAxis * km_CellsPerAxis; ++row) {
        const NvColor rowColor = CellColor(row / km_CellsPerAxis, row % km_CellsPerAxis, 0);
        Row least;
        Row nearest{};
        least.fill(std::numeric_limits<std::int32_t>::max());
        for (std::uint32_t i = 0; i < nTableColors; ++i) {
            const std::int32_t redGreen = SquaredDifference(rowColor.red, colors[i].red) +
                                          SquaredDifference(rowColor.green, colors[i].green);
            const Row& blue = blueDistances[colors[i].blue];
            // Nothing to branch on: compilers make vector instructions of it.
            for (std::size_t cell = 0; cell < km_CellsPerAxis; ++cell) {
                const std::int32_t distance = redGreen + blue[cell];
                nearest[cell] = distance < least[cell] ? static_cast<std::int32_t>(i) : nearest[cell];
                least[cell] = distance < least[cell] ? distance : least[cell];
            }
        }
        for (const std::int32_t index : nearest)
            *outInvMap++ = static_cast<std::uint8_t>(index);
    }
}
