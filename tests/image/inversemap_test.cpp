#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvmakeinvcolormap.h"
#include "tests/image/images.h"

namespace {

using Map = std::vector<std::uint8_t>;

Map MapOf(const NvColorTable& inTable) {
    Map map(km_InverseColorMapSize, 99);
    MakeInverseColorMap(&inTable, map.data());
    return map;
}

TEST(InverseMap, EqualsAPlainSearch) {
    std::mt19937 random(9);
    std::vector<NvColorTable> tables;
    for (const std::uint32_t size : {1u, 2u, 3u, 16u, 100u, 256u, 300u}) {
        tables.push_back(RandomTable(size, random));
        // ties between entries and repeated colours; ties halfway between cells; far from most cells
        for (const auto& [base, step, levels] : {std::array{0u, 51u, 6u}, {2u, 8u, 32u}, {100u, 1u, 9u}}) {
            NvColorTable& table = tables.emplace_back(RandomTable(size, random));
            for (std::uint32_t i = 0; i < size; ++i)
                for (const auto channel : {&NvColor::red, &NvColor::green, &NvColor::blue})
                    table.GetColors()[i].*channel =
                        static_cast<std::uint8_t>(base + step * RandomBelow(random, levels));
        }
    }
    for (const NvColorTable& table : tables) {
        const Map map = MapOf(table);
        for (unsigned cell = 0; cell < km_InverseColorMapSize; ++cell) {
            const unsigned red = cell >> 10, green = cell >> 5 & 31, blue = cell & 31;
            const unsigned color =
                (red * 8 + red / 4) | (green * 8 + green / 4) << 8 | (blue * 8 + blue % 8) << 16;
            ASSERT_EQ(map[cell], table.FindClosestColor(color, -1) & 0xFF)
                << "palette " << &table - tables.data() << ", cell " << cell;
        }
    }
}

} // namespace
