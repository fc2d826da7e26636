#include "nvcode2/nvgifplayer.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/gif/giffiles.h"
#include "tests/support/testanimation.h"

namespace {

/** What is displayed, in the terms of the plain player. */
TestCanvas CanvasOf(const NvGIFPlayer& inPlayer) {
    TestCanvas canvas;
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y)
        for (std::uint32_t x = 0; x < inPlayer.GetScreenWidth(); ++x) {
            const NvGIFPlayer::Pixel pixel = inPlayer.Row(y)[x];
            const auto color =
                static_cast<std::int32_t>((pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF));
            canvas.push_back(pixel == 0 ? km_Uncovered : color);
        }
    return canvas;
}

TEST(GIFPlayer, ShowsWhatAPlainPlayerShows) {
    for (std::uint32_t seed = 0; seed < 150; ++seed) {
        SCOPED_TRACE(seed);
        TestGIF gif = SoundRandomGIF(seed);
        for (TestFrame& frame : gif.mFrames)
            frame.mDisposal = (frame.mDisposal + seed) % 8;
        const std::vector<TestCanvas> expected = Play(gif);
        const std::unique_ptr<NvAnimation> animation = MakeAnimation(gif);
        NvGIFPlayer player(gif.mWidth, gif.mHeight);
        NvGIFPlayer maskless(gif.mWidth, gif.mHeight);
        TestCanvas before = CanvasOf(player);
        for (std::uint32_t i = 0; i < animation->GetFrameCount(); ++i) {
            const NvGIFFrame& frame = animation->GetFrame(i);
            player.ShowFrame(frame);
            const TestCanvas now = CanvasOf(player);
            ASSERT_TRUE(now == expected[i]) << "frame " << i;
            maskless.ShowFrame(frame.GetImage(), frame.GetInfo());
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

} // namespace
