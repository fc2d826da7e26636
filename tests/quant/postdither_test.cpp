#include "nvcode2/quant/nvpostdither.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

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

struct DitherCase {
    const char* mName;
    Rows mBefore;
    Rows mAfter;
    int mTransparent = -1; // -1: the form for opaque images
};

/** 0 and 1 differ by 10, 0 and 2 by 128, 0 and 3 by 129, in red; 4 is white. A row of 5 over one of 0 is an
 *  edge of strength 176, one of 6 is one of 180. */
const NvColorTable km_Colors =
    MakeTable({{0, 0, 0}, {10, 0, 0}, {128, 0, 0}, {129, 0, 0}, {255, 255, 255}, {0, 0, 44}, {0, 0, 45}});

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
    {"below an edge of 176", {"55555", "01010", "00000"}, {"55555", "00110", "00000"}},
    {"below an edge of 180", {"66666", "01010", "00000"}, {"66666", "01010", "00000"}},
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
        NvIndexedImage image = MakeImage(row.mBefore, km_Colors);
        const std::uint32_t exchanged =
            row.mTransparent < 0 ? PostDither(&image)
                                 : PostDitherTransparent(&image, static_cast<std::uint8_t>(row.mTransparent));
        EXPECT_EQ(RowsOf(image), row.mAfter);
        EXPECT_EQ(exchanged > 0, row.mBefore != row.mAfter);
    }
}

} // namespace
