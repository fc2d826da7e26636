// What is displayed, in full and as a thumbnail.

#include "nvcode2/gif/nvgifplayer.h"
#include "nvcode2/gif/nvthumbnail.h"
#include "tests/gif/giffiles.h"
#include "tests/image/images.h"
#include "tests/support/testanimation.h"

namespace {

using testing::ElementsAre;
using Colors = std::vector<NvColor>;

/** Shows a frame row by row, as when it is read from a file. */
void ShowRows(const NvGIFFrame& inFrame, NvGIFPlayer& ioPlayer) {
    const NvIndexedImage& image = inFrame.GetImage();
    const NvConstPixelLock pixels(image);
    ioPlayer.BeginFrame(inFrame.GetInfo(), image.GetColorTable());
    for (std::uint32_t y = 0; y < image.GetHeight(); ++y)
        ioPlayer.DrawRow(y, pixels.Row(y), image.GetWidth());
}

TEST(GIFPlayer, ShowsWhatAPlainPlayerShows) {
    for (std::uint32_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        TestGIF gif = SoundRandomGIF(seed);
        for (TestFrame& frame : gif.mFrames)
            frame.mDisposal = (frame.mDisposal + seed) % 8;
        const std::vector<TestCanvas> expected = Play(gif);
        const std::unique_ptr<TestAnimation> animation = MakeAnimation(gif);
        NvGIFPlayer player(gif.mWidth, gif.mHeight);
        NvGIFPlayer maskless(gif.mWidth, gif.mHeight);
        TestCanvas before = CanvasOf(player);
        for (std::uint32_t i = 0; i < animation->mFrames.size(); ++i) {
            const NvGIFFrame& frame = animation->GetFrame(i);
            player.ShowFrame(frame);
            const TestCanvas now = CanvasOf(player);
            ASSERT_TRUE(now == expected[i]) << "frame " << i;
            ShowRows(frame, maskless);
            ASSERT_TRUE(CanvasOf(maskless) == expected[i]) << "frame " << i;
            for (const NvGIFPlayer* any : {&player, &maskless})
                for (std::uint32_t at = 0; at < now.size(); ++at) {
                    const NvGIFPlayer::Columns& changed = any->GetChangedColumns(at / gif.mWidth);
                    const std::uint32_t x = at % gif.mWidth;
                    if (x < changed.mFirst || x >= changed.mEnd) {
                        ASSERT_EQ(now[at], before[at]) << "pixel " << at << " changed unsaid in frame " << i;
                    }
                }
            before = now;
        }
    }
}

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

TEST(Thumbnail, ReducedPixelsCountAsMuchAsTheyCover) {
    EXPECT_THAT(Render("...1. ..... .....", NvThumbnail(10, 10, {km_Light, km_Dark, 2})),
                ElementsAre(km_Light, km_Light, km_Dark, km_Red, km_Light,  //
                            km_Light, km_Light, km_Dark, km_Dark, km_Light, //
                            km_Dark, km_Dark, km_Light, km_Light, km_Dark));
    const NvThumbnail thumbnail(1, 1, {{255, 255, 255}, km_Dark, 8});
    EXPECT_THAT(Render("12 12", thumbnail), ElementsAre(NvColor{128, 128, 0}));
    EXPECT_THAT(Render("1. ..", thumbnail), ElementsAre(NvColor{255, 191, 191}));
    EXPECT_THAT(Render("1.", thumbnail), ElementsAre(NvColor{255, 127, 127}));
}

} // namespace
