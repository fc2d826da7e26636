#include "tests/support/randomgif.h"

namespace {

constexpr std::uint32_t km_MaxSize = 40; // pixels each way

TestTable RandomTable(TestRandom& ioRandom, std::uint32_t inSize) {
    if (ioRandom.Chance(50))
        return Greys(inSize);
    TestTable table;
    for (std::uint32_t i = 0; i < inSize; ++i)
        table.push_back(ioRandom.Below(0x1000000));
    if (ioRandom.Chance(30))
        table[ioRandom.Below(inSize)] = table[0];
    return table;
}

TestFrame RandomFrame(TestRandom& ioRandom, const TestGIF& inGIF) {
    TestFrame frame;
    frame.mWidth = 1 + ioRandom.Below(inGIF.mWidth);
    frame.mHeight = 1 + ioRandom.Below(inGIF.mHeight);
    if (ioRandom.Chance(50)) {
        frame.mWidth = inGIF.mWidth;
        frame.mHeight = inGIF.mHeight;
    }
    frame.mLeft = ioRandom.Below(inGIF.mWidth - frame.mWidth + 1);
    frame.mTop = ioRandom.Below(inGIF.mHeight - frame.mHeight + 1);
    if (inGIF.mTable.empty() || ioRandom.Chance(25))
        frame.mLocalTable = RandomTable(ioRandom, 2U << ioRandom.Below(8));
    const auto entries = static_cast<std::uint32_t>(frame.mLocalTable.empty() ? inGIF.mTable.size()
                                                                              : frame.mLocalTable.size());
    const std::uint32_t colors =
        std::min(256U, ioRandom.Chance(5) ? entries + 3 : 1 + ioRandom.Below(entries));
    frame.mPixels = RandomPixels(ioRandom, static_cast<TestTexture>(ioRandom.Below(km_TextureCount)),
                                 frame.mWidth, frame.mHeight, colors);
    if (ioRandom.Chance(60))
        frame.mTransparent =
            static_cast<int>(ioRandom.Chance(80) ? ioRandom.Below(colors) : ioRandom.Below(256));
    frame.mDisposal = ioRandom.Below(ioRandom.Chance(70) ? 3 : 8);
    frame.mDelay = ioRandom.Chance(70) ? ioRandom.Below(20) : 0;
    frame.mUserInput = ioRandom.Chance(5);
    frame.mInterlaced = ioRandom.Chance(20);
    if (ioRandom.Chance(5))
        frame.mDelivered = ioRandom.Below(frame.mWidth * frame.mHeight);
    return frame;
}

} // namespace

std::vector<std::uint8_t> RandomPixels(TestRandom& ioRandom, TestTexture inTexture, std::uint32_t inWidth,
                                       std::uint32_t inHeight, std::uint32_t inColors) {
    std::vector<std::uint8_t> pixels(std::size_t{inWidth} * inHeight, 0);
    const auto color = [&] { return static_cast<std::uint8_t>(ioRandom.Below(inColors)); };
    const auto fill = [&](auto inPixel) {
        for (std::uint32_t y = 0; y < inHeight; ++y)
            for (std::uint32_t x = 0; x < inWidth; ++x)
                pixels[y * inWidth + x] = static_cast<std::uint8_t>(inPixel(x, y));
    };
    switch (inTexture) {
    case TestTexture::km_Noise:
        fill([&](std::uint32_t, std::uint32_t) { return color(); });
        break;
    case TestTexture::km_Dither: {
        constexpr std::uint32_t km_Bayer[16] = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
        fill([&](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t level = (x + y) * (inColors - 1) * 16 / (inWidth + inHeight);
            return std::min((level + km_Bayer[y % 4 * 4 + x % 4]) / 16, inColors - 1);
        });
        break;
    }
    case TestTexture::km_Gradient:
        fill([&](std::uint32_t x, std::uint32_t y) { return (x + y) * inColors / (inWidth + inHeight); });
        break;
    case TestTexture::km_Boxes:
        for (std::uint32_t box = 0; box < 6; ++box) {
            const std::uint32_t left = ioRandom.Below(inWidth);
            const std::uint32_t top = ioRandom.Below(inHeight);
            const std::uint8_t filling = color();
            fill([&](std::uint32_t x, std::uint32_t y) {
                return x >= left && y >= top ? filling : pixels[y * inWidth + x];
            });
        }
        break;
    case TestTexture::km_Text: {
        const std::uint8_t ink = color();
        fill([&](std::uint32_t x, std::uint32_t y) {
            return y % 8 < 6 && x % 4 != 0 && ioRandom.Chance(40) ? ink : std::uint8_t{0};
        });
        break;
    }
    case TestTexture::km_Sparse:
        fill([&](std::uint32_t, std::uint32_t) { return ioRandom.Chance(4) ? color() : std::uint8_t{0}; });
        break;
    }
    return pixels;
}

TestGIF RandomGIF(std::uint32_t inSeed) {
    TestRandom random(inSeed);
    TestGIF gif;
    gif.mWidth = 1 + random.Below(km_MaxSize);
    gif.mHeight = 1 + random.Below(km_MaxSize);
    if (random.Chance(85))
        gif.mTable = RandomTable(random, 2U << random.Below(8));
    gif.mBackground = static_cast<std::uint8_t>(random.Below(256));
    gif.mAspect = random.Chance(10) ? 49 : 0;
    if (random.Chance(50))
        gif.mLoop = random.Below(4);
    if (random.Chance(20))
        gif.mComments = {"made by hand", std::string(300, 'x')};
    const std::uint32_t frames = random.Chance(20) ? 1 : 1 + random.Below(8);
    for (std::uint32_t i = 0; i < frames; ++i)
        gif.mFrames.push_back(random.Chance(20) && i > 0 ? gif.mFrames.back() : RandomFrame(random, gif));
    return gif;
}

TestGIF SoundRandomGIF(std::uint32_t inSeed) {
    TestGIF gif = RandomGIF(inSeed);
    for (TestFrame& frame : gif.mFrames) {
        frame.mDelivered.reset();
        for (std::uint8_t& pixel : frame.mPixels)
            pixel = static_cast<std::uint8_t>(pixel % gif.TableOf(frame).size());
    }
    return gif;
}

TestFrame Textured(TestTexture inTexture, std::uint32_t inSize, std::uint32_t inColors,
                   std::uint32_t inSeed) {
    TestRandom random(inSeed);
    TestFrame frame;
    frame.mWidth = frame.mHeight = inSize;
    frame.mPixels = RandomPixels(random, inTexture, inSize, inSize, inColors);
    return frame;
}
