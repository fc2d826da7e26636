#include "nvcode2/nvgifplayer.h"

#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "tests/gif/giffiles.h"
#include "tests/support/testanimation.h"

namespace {

/** What is displayed, in the terms of the plain player. */
TestCanvas CanvasOf(const NvGIFPlayer& inPlayer) {
    TestCanvas canvas;
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y)
        for (const NvGIFPlayer::Pixel pixel : inPlayer.ReadRow(y)) {
            const auto color =
                static_cast<std::int32_t>((pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF));
            canvas.push_back(pixel == 0 ? km_Uncovered : color);
        }
    return canvas;
}

/** Shows a frame row by row, as it comes from a file. */
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

// Colours beyond the first 256, and those beyond 65,536, are told apart as well.
TEST(GIFPlayer, ShowsAnyNumberOfColours) {
    constexpr std::uint32_t side = 272;
    NvGIFPlayer player(side, side);
    TestCanvas expected(side * side, km_Uncovered);
    std::vector<std::uint8_t> indices(256);
    std::iota(indices.begin(), indices.end(), std::uint8_t{0});
    for (std::uint32_t frame = 0; frame < side; ++frame) {
        NvGIFFrameInfo info;
        info.mLeft = static_cast<std::uint16_t>(frame % 17);
        info.mTop = static_cast<std::uint16_t>(frame);
        info.mWidth = 256;
        info.mHeight = 1;
        NvColorTable table(256);
        for (std::uint32_t i = 0; i < 256; ++i) {
            table.SetColor(i, {static_cast<std::uint8_t>(frame), static_cast<std::uint8_t>(i),
                               static_cast<std::uint8_t>(frame >> 8)});
            expected[frame * side + info.mLeft + i] =
                static_cast<std::int32_t>((frame & 0xFF) << 16 | i << 8 | frame >> 8);
        }
        player.BeginFrame(info, table);
        player.DrawRow(0, indices.data(), 256);
        if (frame < 2 || frame > 253) {
            ASSERT_TRUE(CanvasOf(player) == expected) << "frame " << frame;
        }
    }
}

} // namespace
