// What is on a contact sheet, as another reader sees it.

#include "win/sheet/pvcontactsheet.h"

#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/gif/nvgifframereader.h"
#include "tests/support/testgif.h"
#include "wnatom/wnsystem.h"

namespace {

using testing::Each;
using testing::ElementsAre;

constexpr std::int32_t km_Paper = 0xFFFFFF;
constexpr std::int32_t km_Card = 0xEEEEEE;
constexpr std::int32_t km_Outline = 0xADADAD;
constexpr std::int32_t km_Light = 0xFFFFFF;

// Layout of a sheet, in pixels.
constexpr std::uint32_t km_FirstPlace = 8 + 6;
constexpr std::uint32_t km_PlacePitch = 128 + 6;
constexpr std::uint32_t km_CardPitch = 408 + 8;

class ContactSheet : public testing::Test {
protected:
    std::string Write(const TestGIF& inGIF, const std::string& inName = "in.gif") {
        return WriteTestFile(mFolder / inName, EncodeGIF(inGIF));
    }
    void Add(const TestGIF& inGIF) { mSheet.AddFile(Write(inGIF).c_str()); }

    /** Writes the sheet and reads it back, with giflib and with our own reader. */
    void Finish() {
        const std::string path = mFolder / "sheet.gif";
        mSheet.Write(path.c_str());
        const TestGIF gif = ReadGIF(path);
        EXPECT_EQ(gif.mFrames.size(), 1u);
        mWidth = gif.mWidth;
        mHeight = gif.mHeight;
        mPixels = Play(gif)[0];

        NvGIFFrameReader reader(path.c_str(), WnGetUsualMemoryLimit());
        const auto frame = reader.ReadFrame(0);
        const NvConstPixelLock pixels(frame->GetImage());
        const std::vector<std::uint8_t> indices(pixels.Row(0), pixels.Row(mHeight));
        EXPECT_TRUE(indices == gif.mFrames[0].mPixels);
    }

    std::int32_t At(std::uint32_t inX, std::uint32_t inY) const { return mPixels[inY * mWidth + inX]; }

    /** Colours of a part of the sheet, row by row. */
    std::vector<std::int32_t> Area(std::uint32_t inLeft, std::uint32_t inTop, std::uint32_t inWidth,
                                   std::uint32_t inHeight) const {
        std::vector<std::int32_t> colors;
        for (std::uint32_t y = 0; y < inHeight; ++y)
            for (std::uint32_t x = 0; x < inWidth; ++x)
                colors.push_back(At(inLeft + x, inTop + y));
        return colors;
    }

    /** The colours in the middles of a card's three places. */
    std::vector<std::int32_t> Places(std::uint32_t inColumn, std::uint32_t inMiddle) const {
        std::vector<std::int32_t> colors;
        for (std::uint32_t place = 0; place < 3; ++place)
            colors.push_back(
                At(km_FirstPlace + inColumn * km_CardPitch + place * km_PlacePitch + 64, inMiddle));
        return colors;
    }

    TestFolder mFolder;
    PvContactSheet mSheet;
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    TestCanvas mPixels;
};

TEST_F(ContactSheet, APictureLiesInTheMiddleOfItsPlaceWithALineAround) {
    Add(Movie({Picture("123 45.")}));
    Finish();
    EXPECT_EQ(mWidth, 8 + km_CardPitch);
    EXPECT_EQ(mHeight, 8u + (6 + 2 + 6) + 8);
    constexpr std::uint32_t left = km_FirstPlace + 64 - 1;
    EXPECT_THAT(Area(left - 2, 8 + 6, 7, 1),
                ElementsAre(km_Card, km_Outline, 0xFF0000, 0x00FF00, 0xFFFF00, km_Outline, km_Card));
    EXPECT_THAT(Area(left, 8 + 6 - 2, 1, 6),
                ElementsAre(km_Card, km_Outline, 0xFF0000, 0x0000FF, km_Outline, km_Card));
    EXPECT_EQ(At(left + 2, 8 + 6 + 1), km_Light) << "the backdrop, where nothing is drawn";
    EXPECT_THAT(Area(left + 10, 8, 329, 14), Each(km_Card)) << "its other places";
    EXPECT_THAT(Area(0, 0, mWidth, 8), Each(km_Paper));
    EXPECT_THAT(Area(mWidth - 8, 0, 8, mHeight), Each(km_Paper));
}

TEST_F(ContactSheet, ShowsTheFirstTheMiddleAndTheLastFrame) {
    const std::vector<std::pair<std::size_t, std::vector<std::int32_t>>> cases = {
        {1, {0, -1, -1}}, {2, {0, -1, 1}}, {3, {0, 1, 2}}, {4, {0, 1, 3}}, {9, {0, 4, 8}},
    };
    const TestTable table = Movie({}).mTable;
    for (const auto& [count, frames] : cases) {
        std::vector<TestFrame> pictures;
        for (std::size_t i = 0; i < count; ++i)
            pictures.push_back(Picture(std::string(1, static_cast<char>('0' + i))));
        PvContactSheet sheet;
        std::swap(mSheet, sheet);
        Add(Movie(pictures));
        Finish();
        std::vector<std::int32_t> expected;
        for (const std::int32_t frame : frames)
            expected.push_back(frame < 0 ? km_Card
                                         : static_cast<std::int32_t>(table[static_cast<std::size_t>(frame)]));
        EXPECT_EQ(Places(0, mHeight / 2), expected) << count << " frames";
    }
}

TEST_F(ContactSheet, FilesFillRowsAndEachRowIsAsTallAsItsTallest) {
    for (std::uint32_t i = 1; i <= 5; ++i) // 1, 3, 5, 7 and 9 pixels high
        Add(Movie({Paint(1, 2 * i - 1, [=](auto, auto) { return i; })}));
    Finish();
    EXPECT_EQ(mWidth, 8 + 2 * km_CardPitch);
    EXPECT_EQ(mHeight, 8u + (12 + 3 + 8) + (12 + 7 + 8) + (12 + 9 + 8));
    EXPECT_EQ(Places(1, 15)[0], 0x00FF00);
    EXPECT_EQ(Places(0, 40)[0], 0xFFFF00);
    EXPECT_EQ(Places(0, 68)[0], 0xFF00FF);
    EXPECT_THAT(Area(8 + km_CardPitch, 58, 408, 29), Each(km_Paper)) << "no card without a file";
}

TEST_F(ContactSheet, TheMemoryLimitHoldsForFileAndSheet) {
    TestGIF wide = Movie({Picture("1")});
    wide.mWidth = wide.mHeight = 60000;
    const std::string widePath = Write(wide, "wide.gif");
    const std::string smallPath = Write(Movie({Picture("1")}), "small.gif");
    PvContactSheet sheet(std::uint64_t{4} << 20);
    EXPECT_EQ(CodeOf([&] { sheet.AddFile(widePath.c_str()); }), NvErrorCode::km_OutOfMemory);
    std::uint32_t code = 0;
    for (int i = 0; i < 1000 && code == 0; ++i)
        code = CodeOf([&] { sheet.AddFile(smallPath.c_str()); });
    EXPECT_EQ(code, NvErrorCode::km_OutOfMemory);
    EXPECT_GT(sheet.GetFileCount(), 5u);
    EXPECT_LT(sheet.GetFileCount(), 50u);
    std::swap(mSheet, sheet);
    Finish();
}

} // namespace
