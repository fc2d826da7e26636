#include "nvcode2/nvpostdither.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nvcode2/nvpixelpairs.h"
#include "tests/image/images.h"

namespace {

using Rows = std::vector<std::string>; // pixels as digits, their indices

NvIndexedImage MakeImage(const Rows& inRows, const NvColorTable& inTable) {
    NvIndexedImage image(static_cast<std::uint32_t>(inRows[0].size()),
                         static_cast<std::uint32_t>(inRows.size()), inTable);
    std::vector<std::uint8_t> pixels;
    for (const std::string& row : inRows)
        for (const char digit : row)
            pixels.push_back(static_cast<std::uint8_t>(digit - '0'));
    SetBytes(image, pixels);
    return image;
}

Rows RowsOf(const NvIndexedImage& inImage) {
    Rows rows(inImage.GetHeight());
    for (std::uint32_t y = 0; y < inImage.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < inImage.GetWidth(); ++x)
            rows[y] += static_cast<char>('0' + inImage.GetPixel(x, y));
    return rows;
}

/** The eight neighbours' weights of one Sobel sum; the other one is this turned. */
constexpr int km_Sobel[3][3] = {{-1, 0, 1}, {-2, 0, 2}, {-1, 0, 1}};

int PlainEdgeStrength(const Rows& inRows, const NvColorTable& inTable, std::size_t inX, std::size_t inY) {
    int strongest = 0;
    for (std::uint8_t NvColor::*const channel : {&NvColor::red, &NvColor::green, &NvColor::blue}) {
        int across = 0;
        int down = 0;
        for (std::size_t y = 0; y < 3; ++y)
            for (std::size_t x = 0; x < 3; ++x) {
                const char digit = inRows[inY + y - 1][inX + x - 1];
                const int value = inTable.GetColor(static_cast<std::uint32_t>(digit - '0')).*channel;
                across += km_Sobel[y][x] * value;
                down += km_Sobel[x][y] * value;
            }
        strongest = std::max(strongest, std::min(std::abs(across) + std::abs(down), 255));
    }
    return strongest;
}

Rows PlainPostDither(Rows ioRows, const NvColorTable& inTable, char inSpared) {
    const std::size_t width = ioRows[0].size();
    if (width < 5 || ioRows.size() < 3)
        return ioRows;
    for (std::size_t y = 1; y <= ioRows.size() - 2; ++y)
        for (std::size_t i = 0; i < (width - 3) / 2; ++i) {
            const std::size_t x = 1 + 2 * i;
            const char a = ioRows[y][x];
            const char b = ioRows[y][x + 1];
            const NvColor& colorA = inTable.GetColor(static_cast<std::uint32_t>(a - '0'));
            const NvColor& colorB = inTable.GetColor(static_cast<std::uint32_t>(b - '0'));
            if (ioRows[y][x + 2] == a && b != a && ioRows[y][x - 1] != a && a != inSpared && b != inSpared &&
                PlainEdgeStrength(ioRows, inTable, x, y) < 180 &&
                PlainEdgeStrength(ioRows, inTable, x + 1, y) < 180 &&
                std::abs(colorA.red - colorB.red) <= 128 && std::abs(colorA.green - colorB.green) <= 128 &&
                std::abs(colorA.blue - colorB.blue) <= 128)
                std::swap(ioRows[y][x], ioRows[y][x + 1]);
        }
    return ioRows;
}

struct DitherCase {
    const char* mName;
    Rows mBefore;
    Rows mAfter;
    int mTransparent = -1; // -1: the form for opaque images
};

/** 0 and 1 differ by 10, 0 and 2 by 128, 0 and 3 by 129, in red; 4 is white. */
const NvColorTable km_Reds = MakeTable({{0, 0, 0}, {10, 0, 0}, {128, 0, 0}, {129, 0, 0}, {255, 255, 255}});

const DitherCase km_Cases[] = {
    {"A B A", {"00000", "01010", "00000"}, {"00000", "00110", "00000"}},
    {"two patterns share no pixel", {"0000000", "0101010", "0000000"}, {"0000000", "0011010", "0000000"}},
    {"four columns", {"0000", "0101", "0000"}, {"0000", "0101", "0000"}},
    {"two rows", {"00000", "01010"}, {"00000", "01010"}},
    {"outer rows", {"01010", "00000", "01010"}, {"01010", "00000", "01010"}},
    {"starts in the first column", {"00000", "10111", "00000"}, {"00000", "10111", "00000"}},
    {"starts in an even column", {"0000000", "0010111", "0000000"}, {"0000000", "0010111", "0000000"}},
    {"reaches the last column", {"000000", "000101", "000000"}, {"000000", "000101", "000000"}},
    {"inside a run", {"00000", "11010", "00000"}, {"00000", "11010", "00000"}},
    {"128 apart, away from edges", {"22222", "20202", "22222"}, {"22222", "22002", "22222"}},
    {"129 apart", {"33333", "30303", "33333"}, {"33333", "30303", "33333"}},
    {"beside an edge", {"00044", "01044", "00044"}, {"00044", "01044", "00044"}},
    {"edge at the first pixel", {"40000", "41010", "40000"}, {"40000", "41010", "40000"}},
    {"edge at the second pixel", {"00040", "01010", "00040"}, {"00040", "01010", "00040"}},
    {"A is transparent", {"00000", "01010", "00000"}, {"00000", "01010", "00000"}, 1},
    {"B is transparent", {"00000", "01010", "00000"}, {"00000", "01010", "00000"}, 0},
    {"another is transparent", {"00000", "01010", "00000"}, {"00000", "00110", "00000"}, 4},
};

TEST(PostDither, ExchangesPairsInFlatPlaces) {
    for (const DitherCase& row : km_Cases) {
        SCOPED_TRACE(row.mName);
        NvIndexedImage image = MakeImage(row.mBefore, km_Reds);
        const std::uint32_t exchanged =
            row.mTransparent < 0 ? PostDither(&image)
                                 : PostDitherTransparent(&image, static_cast<std::uint8_t>(row.mTransparent));
        EXPECT_EQ(RowsOf(image), row.mAfter);
        EXPECT_EQ(exchanged > 0, row.mBefore != row.mAfter);
        EXPECT_FALSE(image.IsLocked());
    }
    EXPECT_DEATH(PostDither(nullptr), "ioImagePtr");
    EXPECT_DEATH(PostDitherTransparent(nullptr, 0), "ioImagePtr");
}

TEST(PostDither, DoesAsThePlainPassDoes) {
    std::mt19937 random(1);
    std::size_t changed = 0;
    for (int round = 0; round < 400; ++round) {
        NvColorTable table(6);
        for (std::uint32_t i = 0; i < 6; ++i) // near enough to each other for some pairs to qualify
            table.SetColor(i, {static_cast<std::uint8_t>(RandomBelow(random, 160)),
                               static_cast<std::uint8_t>(RandomBelow(random, 60)),
                               static_cast<std::uint8_t>(RandomBelow(random, 160))});
        Rows rows(3 + RandomBelow(random, 6), std::string(5 + RandomBelow(random, 12), '0'));
        for (std::string& row : rows)
            for (std::size_t x = 0; x < row.size(); ++x)
                row[x] = static_cast<char>(
                    '0' + (x % 2 && RandomBelow(random, 3) ? round % 6 : RandomBelow(random, 6)));
        NvIndexedImage opaque = MakeImage(rows, table);
        PostDither(&opaque);
        const Rows expected = PlainPostDither(rows, table, '.');
        ASSERT_EQ(RowsOf(opaque), expected);
        NvIndexedImage transparent = MakeImage(rows, table);
        PostDitherTransparent(&transparent, 2);
        ASSERT_EQ(RowsOf(transparent), PlainPostDither(rows, table, '2'));
        changed += expected != rows;
    }
    EXPECT_GT(changed, 100u);
}

TEST(PixelPairs, ColoursAreCloseUpTo128InEveryChannel) {
    for (const NvColor& step : {NvColor{1, 0, 0}, NvColor{0, 1, 0}, NvColor{0, 0, 1}})
        for (const int difference : {0, 128, 129, 255}) {
            const NvColor high{static_cast<std::uint8_t>(step.red * difference),
                               static_cast<std::uint8_t>(step.green * difference),
                               static_cast<std::uint8_t>(step.blue * difference)};
            EXPECT_EQ(ColoursClose(high, km_Black), difference <= 128);
            EXPECT_EQ(ColoursClose(km_Black, high), difference <= 128);
        }
}

} // namespace
