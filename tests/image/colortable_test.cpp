#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvmakeinvcolormap.h"
#include "tests/image/images.h"
#include "tests/support/codeof.h"
#include "tests/support/plaininversemap.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using Map = std::vector<std::uint8_t>;

constexpr NvColor km_Grey{128, 128, 128};

TEST(ColorTable, IsAValue) {
    NvColorTable table = MakeTable({km_Red, km_Green});
    NvColorTable copy(table);
    copy.SetColor(0, km_Blue);
    EXPECT_THAT(ColorsOf(table), ElementsAre(km_Red, km_Green));
    EXPECT_FALSE(copy == table);

    copy = table;
    EXPECT_TRUE(copy == table);
    const NvColorTable& same = copy;
    copy = same;
    EXPECT_TRUE(copy == table);

    NvColorTable moved(std::move(copy));
    EXPECT_TRUE(moved == table);
    table = std::move(moved);
    EXPECT_THAT(ColorsOf(table), ElementsAre(km_Red, km_Green));

    table.Clear();
    EXPECT_EQ(table.GetColors(), nullptr);
    EXPECT_TRUE(table == NvColorTable());
}

TEST(ColorTable, SizesKeepTheLeadingColours) {
    NvColorTable table(2);
    EXPECT_THAT(ColorsOf(table), ElementsAre(km_Black, km_Black));
    table.SetColor(1, km_Red);
    table.SetSize(5);
    EXPECT_EQ(table.GetSize(), 5u);
    EXPECT_EQ(table.GetColor(1), km_Red);
    table.SetSize(1);
    EXPECT_THAT(ColorsOf(table), ElementsAre(km_Black));
    table.SetSize(0);
    EXPECT_EQ(table.GetColors(), nullptr);
}

TEST(ColorTable, FindsTheClosestColour) {
    const NvColorTable table =
        MakeTable({{10, 0, 0}, {0, 10, 0}, {200, 0, 0}, km_Blue, {0, 0, 9}, {9, 0, 0}, {200, 0, 0}, km_Blue});
    struct {
        const char* what;
        NvColor color;
        std::int32_t skip;
        std::uint32_t expected;
    } const km_Cases[] = {
        {"an exact match", km_Blue, -1, 3},
        {"the later of two exact matches", km_Blue, 3, 7},
        {"the lower of two equally near", {10, 10, 0}, -1, 0},
        {"the other one when that is skipped", {10, 10, 0}, 0, 1},
        {"the first candidate skipped", {11, 0, 0}, 0, 5},
        {"nothing skipped by any negative index", {11, 0, 0}, -7, 0},
        {"a skip index beyond the table", {255, 0, 0}, 400, 2},
        {"the nearest, not an earlier near one", {9, 0, 1}, -1, 5},
    };
    for (const auto& test : km_Cases)
        EXPECT_EQ(table.FindClosestColor(NvPackColor(test.color), test.skip), test.expected) << test.what;

    EXPECT_EQ(MakeTable({km_Red}).FindClosestColor(0, 0), 1u) << "nothing is left to find";
    EXPECT_EQ(CodeOf([] { NvColorTable().FindClosestColor(0, -1); }), 27u);
    EXPECT_EQ(NvColorTable::ColorDistance(&km_Black, &km_White), 195075u);
    EXPECT_EQ(NvPackColor({0x11, 0x22, 0x33}), 0x332211u) << "red in the low byte";
}

TEST(ColorTable, FindsTheClosestOtherColour) {
    const NvColorTable table = MakeTable({km_Red, km_Green, {250, 0, 0}, km_Green, km_Green});
    EXPECT_EQ(table.FindClosestOtherColor(0), 2u);
    EXPECT_EQ(table.FindClosestOtherColor(1), 3u) << "the same colour again, the first of them";
    EXPECT_EQ(table.FindClosestOtherColor(4), 1u);
    EXPECT_DEATH(MakeTable({km_Red}).FindClosestOtherColor(0), "inIndex < mTableSize && mTableSize >= 2");
}

TEST(ColorTable, CountsTheBitsOfAFileTable) {
    constexpr std::pair<std::uint32_t, std::uint32_t> km_Cases[] = {
        {0, 1},  {1, 1},  {2, 1},  {3, 2},  {4, 2},   {5, 3},   {8, 3},   {9, 4},   {16, 4},   {17, 5},
        {32, 5}, {33, 6}, {64, 6}, {65, 7}, {128, 7}, {129, 8}, {256, 8}, {257, 8}, {4000, 8},
    };
    for (const auto& [size, bits] : km_Cases)
        EXPECT_EQ(NvColorTable::GetBitsNeeded(size), bits) << size;
}

TEST(ColorTable, DuplicatesGoToTheirFirstOccurrence) {
    const NvColorTable table = MakeTable({km_White, km_Red, km_White, km_Blue, km_Red});
    std::array<std::uint8_t, 5> map{};
    EXPECT_THAT(ColorsOf(table.RemoveDuplicatesWithMap(map.data())), ElementsAre(km_White, km_Red, km_Blue));
    EXPECT_THAT(map, ElementsAre(0, 1, 0, 2, 1));
    EXPECT_THAT(ColorsOf(table.RemoveDuplicates()), ElementsAre(km_White, km_Red, km_Blue));
    EXPECT_EQ(NvColorTable().RemoveDuplicates().GetSize(), 0u);
}

TEST(ColorTable, MergesAppendNewColours) {
    const NvColorTable table = MakeTable({km_White, km_Red});
    const NvColorTable other = MakeTable({km_Red, km_Blue, km_Green});
    EXPECT_THAT(ColorsOf(table.MergeTables(&other, 4)), ElementsAre(km_White, km_Red, km_Blue, km_Green));
    EXPECT_THAT(ColorsOf(table.MergeTables(&other, 3)), ElementsAre(km_White, km_Red, km_Blue));
    EXPECT_DEATH((void)table.MergeTables(&other, 1), "inMaxSize >= mTableSize");
    EXPECT_DEATH((void)table.MergeTables(nullptr, 9), "inTablePtr");
}

TEST(ColorTable, SortsByHistogramAndKeepsTiesInOrder) {
    std::vector<std::int32_t> histogram(4096, 0);
    const NvColorTable table = MakeTable({km_Black, km_Red, km_Green, km_Blue, km_White});
    EXPECT_TRUE(table.SortByHistogram(histogram.data()) == table);

    histogram[0xF00] = 5;
    histogram[0x00F] = 9;
    histogram[0xFFF] = 5;
    EXPECT_THAT(ColorsOf(table.SortByHistogram(histogram.data())),
                ElementsAre(km_Blue, km_Red, km_White, km_Black, km_Green));
}

TEST(ColorTable, MakesGreyRampsBothWays) {
    NvColorTable table;
    table.MakeGrayRamp(0);
    EXPECT_EQ(table.GetColor(200), (NvColor{200, 200, 200}));
    table.MakeGrayRamp(0xFF);
    EXPECT_EQ(table.GetColor(200), (NvColor{55, 55, 55}));
    EXPECT_DEATH(table.MakeGrayRamp(1), "\"0\"");
}

TEST(ColorTable, MakesTheWebPalette) {
    NvColorTable table;
    table.MakeWebPalette(false);
    EXPECT_EQ(table.GetSize(), 216u);
    EXPECT_EQ(table.GetColor(1), (NvColor{0, 0, 51}));
    EXPECT_EQ(table.GetColor(1 * 36 + 2 * 6 + 3), (NvColor{51, 102, 153}));
    EXPECT_EQ(table.GetColor(215), km_White);
    table.MakeWebPalette(true);
    EXPECT_EQ(table.GetSize(), 256u);
    EXPECT_EQ(table.GetColor(216), km_White);
    EXPECT_EQ(table.GetColor(255), km_White);
}

TEST(ColorTable, MakesTheSystemPalette) {
    NvColorTable table;
    table.MakeSystemPalette();
    const std::pair<std::uint32_t, NvColor> km_Cases[] = {
        {0, km_White},
        {1, {255, 255, 0xCC}},
        {6, {255, 0xCC, 255}},
        {36, {0xCC, 255, 255}},
        {214, {0, 0, 0x33}},
        {215, {0xEE, 0, 0}},
        {224, {0x11, 0, 0}},
        {225, {0, 0xEE, 0}},
        {239, {0, 0, 0x88}},
        {244, {0, 0, 0x11}},
        {245, {0xEE, 0xEE, 0xEE}},
        {250, {0x77, 0x77, 0x77}},
        {254, {0x11, 0x11, 0x11}},
        {255, km_Black},
    };
    EXPECT_EQ(table.GetSize(), 256u);
    for (const auto& [index, color] : km_Cases)
        EXPECT_EQ(table.GetColor(index), color) << index;
    EXPECT_EQ(table.RemoveDuplicates().GetSize(), 256u) << "every colour is there once";
}

TEST(ColorTable, IndicesBeyondTheTableAreOurMistake) {
    NvColorTable table(3);
    EXPECT_DEATH((void)table.GetColor(3), "inIndex < mTableSize && mTable");
    EXPECT_DEATH(table.SetColor(3, km_Red), "inIndex < mTableSize && mTable");
    EXPECT_DEATH((void)NvColorTable().GetColor(0), "inIndex < mTableSize && mTable");
}

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
