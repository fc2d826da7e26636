#pragma once

#include <cstdint>
#include <limits>

#include "nvcode2/image/nvcolortable.h"

/** The inverse colour map by its definition: every cell looks at every entry. What the benchmark compares
 *  with. */
inline void PlainInverseColorMap(const NvColorTable& inTable, std::uint8_t* outInvMap) {
    for (std::uint32_t cell = 0; cell < 32768; ++cell) {
        const std::uint32_t red = cell >> 10;
        const std::uint32_t green = cell >> 5 & 31;
        const std::uint32_t blue = cell & 31;
        const NvColor color{static_cast<std::uint8_t>(red * 8 + red / 4),
                            static_cast<std::uint8_t>(green * 8 + green / 4),
                            static_cast<std::uint8_t>(blue * 8 + blue % 8)};
        std::uint32_t best = std::numeric_limits<std::uint32_t>::max();
        for (std::uint32_t i = 0; i < inTable.GetSize(); ++i) {
            const std::uint32_t distance = NvColorTable::ColorDistance(&inTable.GetColor(i), &color);
            if (distance < best) {
                best = distance;
                outInvMap[cell] = static_cast<std::uint8_t>(i);
            }
        }
    }
}
