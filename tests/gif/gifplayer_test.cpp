#include "nvcode2/nvgifplayer.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/image/images.h"
#include "tests/support/frames.h"

namespace {

/** Entry i is grey 1 + i, so that the canvas can be told in the frames' own letters. */
NvColorTable Letters() {
    NvColorTable table(10);
    for (std::uint32_t i = 0; i < 10; ++i)
        table.SetColor(i, NvColor{static_cast<std::uint8_t>(1 + i), 0, 0});
    return table;
}

std::vector<std::string> CanvasOf(const NvGIFPlayer& inPlayer) {
    std::vector<std::string> rows(inPlayer.GetScreenHeight(), std::string(inPlayer.GetScreenWidth(), '.'));
    for (std::uint32_t y = 0; y < inPlayer.GetScreenHeight(); ++y)
        for (std::uint32_t x = 0; x < inPlayer.GetScreenWidth(); ++x)
            if (const NvGIFPlayer::Pixel pixel = inPlayer.Row(y)[x])
                rows[y][x] = static_cast<char>('0' - 1 + (pixel & 0xFF));
    return rows;
}

TEST(GIFPlayer, PlaysRandomAnimationsAsAPlainPlayerDoes) {
    constexpr std::uint32_t km_Width = 21;
    constexpr std::uint32_t km_Height = 7;
    std::mt19937 random(4);
    for (int round = 0; round < 60; ++round) {
        NvGIFPlayer player(km_Width, km_Height);
        std::vector<std::string> before(km_Height, std::string(km_Width, '.')); // below the next frame
        for (int i = 0; i < 8; ++i) {
            const std::uint32_t width = 1 + RandomBelow(random, km_Width);
            const std::uint32_t height = 1 + RandomBelow(random, km_Height);
            const std::uint32_t left = RandomBelow(random, km_Width - width + 1);
            const std::uint32_t top = RandomBelow(random, km_Height - height + 1);
            std::vector<std::string> rows(height, std::string(width, '.'));
            std::vector<std::string> canvas = before;
            std::vector<std::string> cleared = before;
            for (std::uint32_t y = 0; y < height; ++y)
                for (std::uint32_t x = 0; x < width; ++x) {
                    cleared[top + y][left + x] = '.';
                    if (RandomBelow(random, 16) < 3)
                        continue;
                    rows[y][x] = static_cast<char>('0' + RandomBelow(random, 10));
                    canvas[top + y][left + x] = rows[y][x];
                }
            const auto frame =
                MakeFrame(rows, Letters(), static_cast<std::uint16_t>(left), static_cast<std::uint16_t>(top));
            frame->GetInfo().mDisposal = RandomBelow(random, 8);

            const std::vector<std::string> last = CanvasOf(player);
            player.ShowFrame(*frame);
            ASSERT_EQ(CanvasOf(player), canvas);
            const NvRect& changed = player.GetChangedRect();
            for (std::uint32_t y = 0; y < km_Height; ++y)
                for (std::uint32_t x = 0; x < km_Width; ++x)
                    if (canvas[y][x] != last[y][x]) {
                        EXPECT_TRUE(static_cast<std::int32_t>(x) >= changed.left &&
                                    static_cast<std::int32_t>(x) < changed.right &&
                                    static_cast<std::int32_t>(y) >= changed.top &&
                                    static_cast<std::int32_t>(y) < changed.bottom);
                    }
            switch (frame->GetInfo().mDisposal) {
            case 2:
                before = cleared;
                break;
            case 3:
            case 4:
                break;
            default:
                before = canvas;
            }
        }
    }
}

} // namespace
