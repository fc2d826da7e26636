#include "nvcode2/nvmakeinvcolormap.h"

#include <cstdint>
#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "tests/image/images.h"
#include "tests/support/plaininversemap.h"

namespace {

using testing::Each;

using Map = std::vector<std::uint8_t>;

Map MapOf(const NvColorTable& inTable) {
    Map map(km_InverseColorMapSize, 99);
    MakeInverseColorMap(&inTable, map.data());
    return map;
}

TEST(InverseMap, CellsStandForTheirWidenedColour) {
    EXPECT_THAT(MapOf(MakeTable({km_Red})), Each(0));
    const Map blues = MapOf(MakeTable({{0, 0, 255}, {0, 0, 248}}));
    EXPECT_EQ(blues[31], 0) << "stands for blue 255";
    EXPECT_EQ(blues[30], 1) << "stands for blue 246";
    EXPECT_EQ(NvInverseColorMapCell(km_White), 32767u);
    EXPECT_EQ(NvInverseColorMapCell({8, 16, 31}), 1u << 10 | 2u << 5 | 3u);
    EXPECT_EQ(MapOf(MakeTable({km_White, km_Black}))[0], 1);
    EXPECT_EQ(MapOf(MakeTable({km_Black, km_White}))[32767], 1);
    Map map(km_InverseColorMapSize);
    EXPECT_DEATH(MakeInverseColorMap(nullptr, map.data()), "inTablePtr && outInvMap");
    const NvColorTable empty;
    EXPECT_DEATH(MakeInverseColorMap(&empty, map.data()), "nTableColors");
}

/** A palette of inSize colours, each channel one of inLevels values from inBase on, inStep apart. */
NvColorTable GridTable(std::uint32_t inSize, std::uint32_t inBase, std::uint32_t inStep,
                       std::uint32_t inLevels, std::mt19937& ioRandom) {
    const auto level = [&] {
        return static_cast<std::uint8_t>(inBase + inStep * RandomBelow(ioRandom, inLevels));
    };
    NvColorTable table(inSize);
    for (std::uint32_t i = 0; i < inSize; ++i)
        table.SetColor(i, {level(), level(), level()});
    return table;
}

TEST(InverseMap, EqualsAPlainSearch) {
    std::mt19937 random(9);
    std::vector<NvColorTable> tables;
    for (const std::uint32_t size : {1u, 2u, 3u, 16u, 100u, 256u, 300u}) {
        tables.push_back(RandomTable(size, random));
        tables.push_back(GridTable(size, 0, 51, 6, random));  // ties between entries and repeated colours
        tables.push_back(GridTable(size, 2, 8, 32, random));  // ties halfway between cells
        tables.push_back(GridTable(size, 100, 1, 9, random)); // far from most cells
    }
    tables.push_back(GridTable(9000, 96, 1, 32, random)); // more at one place than there ever should be
    NvColorTable palette;
    palette.MakeGrayRamp(0xFF);
    tables.push_back(palette);
    palette.MakeWebPalette(true);
    tables.push_back(palette);
    palette.MakeSystemPalette();
    tables.push_back(palette);
    for (const NvColorTable& table : tables) {
        Map expected(km_InverseColorMapSize);
        PlainInverseColorMap(table, expected.data());
        ASSERT_TRUE(MapOf(table) == expected) << "palette " << &table - tables.data();
    }
}

} // namespace
