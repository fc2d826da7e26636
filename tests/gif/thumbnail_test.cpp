#include "nvcode2/nvthumbnail.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/image/images.h"
#include "tests/support/testanimation.h"

namespace {

using testing::ElementsAre;
using Colors = std::vector<NvColor>;

constexpr NvColor km_Light{250, 200, 150};
constexpr NvColor km_Dark{50, 100, 150};

/** What a thumbnail shows of a frame, whose rows Picture takes. */
Colors Render(const std::string& inRows, const NvThumbnail& inThumbnail) {
    const TestGIF gif = Movie({Picture(inRows)});
    NvGIFPlayer player(gif.mWidth, gif.mHeight);
    player.ShowFrame(MakeAnimation(gif)->GetFrame(0));
    const NvRGBImage image = inThumbnail.Render(player);
    EXPECT_EQ(image.GetBounds(), inThumbnail.Fit(gif.mWidth, gif.mHeight));
    const std::vector<std::uint8_t> bytes = BytesOf(image);
    Colors colors;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
        colors.push_back({bytes[i], bytes[i + 1], bytes[i + 2]});
    return colors;
}

TEST(Thumbnail, FitsItsBoxWithItsProportions) {
    struct {
        std::uint32_t mWidth, mHeight, mBoxWidth, mBoxHeight;
        std::int32_t mFitWidth, mFitHeight;
    } const cases[] = {
        {1, 1, 128, 128, 1, 1},        {128, 128, 128, 128, 128, 128},
        {128, 5, 128, 128, 128, 5},    {129, 128, 128, 128, 128, 127},
        {256, 100, 128, 128, 128, 50}, {100, 300, 128, 128, 43, 128},
        {300, 300, 128, 64, 64, 64},   {300, 150, 128, 64, 128, 64},
        {300, 100, 128, 64, 128, 43},  {65535, 1, 128, 128, 128, 1},
        {1, 65535, 128, 128, 1, 128},  {65535, 65535, 300, 200, 200, 200},
        {65535, 300, 1, 1, 1, 1},      {600, 400, 65535, 65535, 600, 400},
    };
    for (const auto& c : cases)
        EXPECT_EQ(NvThumbnail(c.mBoxWidth, c.mBoxHeight).Fit(c.mWidth, c.mHeight),
                  (NvRect{0, 0, c.mFitWidth, c.mFitHeight}))
            << c.mWidth << " x " << c.mHeight;
    EXPECT_DEATH(NvThumbnail(0, 1), "inBoxWidth && inBoxHeight");
    EXPECT_DEATH(NvThumbnail(1, 1, {km_Light, km_Dark, 0}), "inBackdrop.mSquare");
}

TEST(Thumbnail, TheBackdropShowsWhereNothingIsDrawn) {
    const NvThumbnail thumbnail(10, 10, {km_Light, km_Dark, 2});
    EXPECT_THAT(Render("...1. ..... .....", thumbnail),
                ElementsAre(km_Light, km_Light, km_Dark, km_Red, km_Light,  //
                            km_Light, km_Light, km_Dark, km_Dark, km_Light, //
                            km_Dark, km_Dark, km_Light, km_Light, km_Dark));
    EXPECT_THAT(Render(".", NvThumbnail(1, 1, {km_Dark, km_Dark, 1})), ElementsAre(km_Dark));
}

TEST(Thumbnail, ReducedPixelsCountAsMuchAsTheyCover) {
    const NvThumbnail thumbnail(1, 1, {{255, 255, 255}, km_Dark, 8});
    EXPECT_THAT(Render("12 12", thumbnail), ElementsAre(NvColor{128, 128, 0}));
    EXPECT_THAT(Render("1. ..", thumbnail), ElementsAre(NvColor{255, 191, 191}));
    EXPECT_THAT(Render("1.", thumbnail), ElementsAre(NvColor{255, 127, 127}));
    // however the parts are rounded, one colour on itself stays that colour
    const NvColor color{0, 128, 128}; // entry 14
    for (std::size_t undrawn = 0; undrawn <= 7; ++undrawn)
        EXPECT_THAT(Render(std::string(undrawn, '.') + std::string(7 - undrawn, 'e'),
                           NvThumbnail(1, 1, {color, color, 1})),
                    ElementsAre(color))
            << undrawn;
}

TEST(Thumbnail, SquaresStayWholeAtAnyReduction) {
    EXPECT_THAT(Render(std::string(70, '.'), NvThumbnail(10, 10, {km_Light, km_Dark, 3})),
                ElementsAre(km_Light, km_Light, km_Light, km_Dark, km_Dark, km_Dark, km_Light, km_Light,
                            km_Light, km_Dark));
}

} // namespace
