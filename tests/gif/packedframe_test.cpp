// Frames at rest come back as they were.

#include "nvcode2/gif/nvlzwstringtable.h"
#include "nvcode2/gif/nvpackedframe.h"
#include "tests/gif/giffiles.h"
#include "tests/support/randomgif.h"
#include "tests/support/testanimation.h"

namespace {

/** A still of as many colours, each pixel's index by chance. */
TestGIF Noise(std::uint32_t inColors, std::uint32_t inSize, std::uint32_t inSeed) {
    TestGIF gif = Movie({Textured(TestTexture::km_Noise, inSize, inColors, inSeed)});
    gif.mTable = Greys(256);
    return gif;
}

TEST(PackedFrame, ComesBackAsItWas) {
    std::vector<TestGIF> gifs = {Noise(2, 300, 1), Noise(7, 200, 2), Noise(256, 100, 3)};
    gifs.push_back(Movie({Picture(std::string(5000, '0'))}));
    for (std::uint32_t seed = 0; seed < 150; ++seed)
        gifs.push_back(SoundRandomGIF(seed));
    NvLZWStringTable strings;
    for (const TestGIF& gif : gifs) {
        const auto animation = MakeAnimation(gif);
        const TestAnimation result(*animation->Pack());
        EXPECT_EQ(Play(Describe(result)), Play(gif));
        for (std::size_t i = 0; i < gif.mFrames.size(); ++i)
            EXPECT_EQ(result.GetFrame(i).GetInfo().mDisposal, gif.mFrames[i].mDisposal);
    }
}

TEST(PackedFrame, AMaskIsKeptWhereEveryIndexIsDrawn) {
    TestGIF gif = Noise(256, 256, 4);
    for (std::size_t at = 0; at < gif.mFrames[0].mPixels.size(); ++at)
        gif.mFrames[0].mPixels[at] = static_cast<std::uint8_t>(at); // packs well but for the mask
    const auto animation = MakeAnimation(gif);
    NvGIFFrame& frame = animation->GetFrame(0);
    {
        const NvPixelLock mask(frame.GetMask());
        mask.Row(255)[0] = 0;
    }
    NvLZWStringTable strings;
    const auto copy = NvPackedFrame(frame.Copy(), strings).Unpack();
    EXPECT_EQ(Rows(*copy), Rows(frame));
}

} // namespace
