#include "nvcode2/gif/nvgifframe.h"

#include "nvcode2/image/nvmaskrow.h"
#include "tests/image/images.h"
#include "tests/support/testanimation.h"

namespace {

struct TransparencyCase {
    const char* mName;
    std::string mRow;
    std::uint32_t mTableSize;
    int mSharedSize; // -1: the frame has a local table
    std::uint32_t mLimit;
    int mPresent; // transparent index before, -1: none
    int mTransparent;
    std::uint32_t mNewTableSize;
    int mNewSharedSize;
    std::string mNewRow;
};

const TransparencyCase km_Transparencies[] = {
    {"all drawn", "0123", 4, -1, 256, 3, -1, 4, -1, "0123"},
    {"lowest free index", "0.2", 4, -1, 256, -1, 1, 4, -1, "0.2"},
    {"the present one stays when that is no wider", "0.2", 4, -1, 256, 3, 3, 4, -1, "0.2"},
    {"the present one is wider", "0.1", 8, -1, 256, 7, 2, 8, -1, "0.1"},
    {"a higher colour is as wide as the present one", "0.5", 8, -1, 256, 7, 7, 8, -1, "0.5"},
    {"the present one is drawn", "1.2", 3, -1, 256, 1, 0, 3, -1, "1.2"},
    {"the present one is not in the table", "0.2", 4, -1, 256, 200, 1, 4, -1, "0.2"},
    {"the present one is just behind the table", "0.2", 3, -1, 256, 3, 1, 3, -1, "0.2"},
    {"one more entry", "0.1", 2, -1, 256, -1, 2, 3, -1, "0.1"},
    {"one more shared entry", "0.1", 2, 2, 256, -1, 2, 3, 3, "0.1"},
    {"the next shared entry", "0.1", 2, 5, 128, -1, 2, 3, 5, "0.1"},
    {"nothing drawn", "...", 4, 4, 128, -1, 0, 4, 4, "..."},
    {"nothing drawn and no table", "...", 0, -1, 256, -1, 0, 1, -1, "..."},
    // Entries 0 to 4 are greys of level 0, 10, 40, 90, 160. 0 and 1 cost the same: the lower one goes.
    {"no room", "00.112223333", 4, 4, 4, -1, 0, 4, 4, "11.112223333"},
    {"no room, few pixels", "000000.1222223", 4, -1, 4, -1, 1, 4, -1, "000000.0222223"},
    {"more entries than allowed", "0001.23444", 5, -1, 3, -1, 1, 5, -1, "0000.23444"},
};

TEST(GIFFrame, FindsAnIndexForWhatIsNotDrawn) {
    const TestTable greys = {0x000000, 0x0A0A0A, 0x282828, 0x5A5A5A, 0xA0A0A0, 0xFAFAFA, 0, 0};
    const auto firstGreys = [&](std::uint32_t inSize) {
        return TestTable(greys.begin(), greys.begin() + inSize);
    };
    for (const TransparencyCase& row : km_Transparencies) {
        SCOPED_TRACE(row.mName);
        TestGIF gif = Movie({Picture(row.mRow)});
        const bool isShared = row.mSharedSize >= 0;
        gif.mTable = firstGreys(row.mTableSize);
        const auto animation = MakeAnimation(gif);
        NvGIFFrame& frame = animation->GetFrame(0);
        NvGIFFrameInfo& info = frame.GetInfo();
        info.mHasLocalTable = !isShared;
        info.mHasTransparency = row.mPresent >= 0;
        info.mTransparentIndex = static_cast<std::uint8_t>(std::max(row.mPresent, 0));
        gif.mTable = firstGreys(static_cast<std::uint32_t>(std::max(row.mSharedSize, 0)));
        NvColorTable shared = MakeAnimation(gif)->mInfo->mColorTable;

        frame.UpdateTransparency(isShared ? &shared : nullptr, row.mLimit);

        EXPECT_EQ(info.mHasTransparency ? info.mTransparentIndex : -1, row.mTransparent);
        EXPECT_EQ(frame.GetImage().GetColorTable().GetSize(), row.mNewTableSize);
        EXPECT_EQ(Rows(frame), row.mNewRow);
        for (std::uint32_t x = 0; x < frame.GetWidth(); ++x)
            EXPECT_EQ(frame.GetImage().GetPixel(x, 0) == row.mTransparent, row.mNewRow[x] == '.');
        if (isShared) {
            ASSERT_EQ(shared.GetSize(), static_cast<std::uint32_t>(row.mNewSharedSize));
            shared.SetSize(row.mNewTableSize);
        }
        EXPECT_TRUE((isShared ? shared : info.mColorTable) == frame.GetImage().GetColorTable());
    }
}

} // namespace
