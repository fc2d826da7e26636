#include "nvcode2/image/nvbitmapimage.h"

#include <array>
#include <memory>
#include <vector>

#include <gmock/gmock.h>

#include "tests/image/images.h"
#include "tests/support/codeof.h"

namespace {

using testing::Each;
using testing::ElementsAre;

TEST(BitmapImage, TheTopBitIsTheLeftmostPixel) {
    std::array<std::uint8_t, 4> bytes{};
    NvBitmapImage::SetBit(bytes.data(), 2, 0, 0, 1);
    NvBitmapImage::SetBit(bytes.data(), 2, 9, 1, 1);
    EXPECT_THAT(bytes, ElementsAre(0x80, 0, 0, 0x40));
    EXPECT_EQ(NvBitmapImage::GetBit(bytes.data(), 2, 9, 1), 1u);
    EXPECT_EQ(NvBitmapImage::GetBit(bytes.data(), 2, 8, 1), 0u);
    NvBitmapImage::SetBit(bytes.data(), 2, 9, 1, 0);
    EXPECT_THAT(bytes, ElementsAre(0x80, 0, 0, 0));
    EXPECT_DEATH((void)NvBitmapImage::GetBit(nullptr, 2, 0, 0), "iRowBytes && iBuffer");
}

TEST(BitmapImage, ErasesToWhatPolarityAndFillSay) {
    for (const std::uint8_t polarity : {std::uint8_t{0}, std::uint8_t{1}}) {
        for (const std::uint32_t fill : {0u, 1u}) {
            const NvBitmapImage mask(9, 2, polarity, fill);
            EXPECT_THAT(BytesOf(mask), Each(polarity != fill ? 0xFF : 0x00)) << +polarity << ", " << fill;
            EXPECT_EQ(IsSet(mask, 8, 1), fill == 1);
        }
    }
    EXPECT_EQ(CodeOf([] { NvBitmapImage(1, 1, 2); }), 21u);
    NvBitmapImage().Erase();
}

TEST(BitmapImage, CopiesKeepPolarityAndNeedIt) {
    NvBitmapImage mask(16, 3, 1);
    SetBytes(mask, {0x12, 0x40, 0xFF});
    const std::unique_ptr<NvImage> clone = mask.Clone();
    const auto& copy = static_cast<const NvBitmapImage&>(*clone);
    EXPECT_EQ(copy.GetPolarity(), 1);
    EXPECT_EQ(BytesOf(copy), BytesOf(mask));
    const auto region = mask.CopyRegion({3, 0, 9, 1});
    EXPECT_EQ(static_cast<const NvBitmapImage&>(*region).GetPolarity(), 1);
    EXPECT_EQ(BytesOf(static_cast<const NvBitmapImage&>(*region))[0] & 0xFC, 0x90);

    NvBitmapImage other(1, 1, 0);
    EXPECT_EQ(CodeOf([&] { other.CopyFrom(mask); }), 21u);
    EXPECT_EQ(CodeOf([&] { other.SetPolarity(2); }), 21u);
}

TEST(BitmapImage, SetPixelsReadWhite) {
    NvBitmapImage mask(3, 1);
    SetBytes(mask, {0xA0});
    std::array<std::uint8_t, 6> out{};
    mask.ReadRGB({1, 0, 3, 1}, out.data(), 6, {});
    EXPECT_THAT(out, ElementsAre(0, 0, 0, 255, 255, 255));
    mask.SetPolarity(1);
    mask.ReadRGB({1, 0, 3, 1}, out.data(), 6, {});
    EXPECT_THAT(out, ElementsAre(255, 255, 255, 0, 0, 0));
}

} // namespace
