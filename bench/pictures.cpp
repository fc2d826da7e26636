#include "bench/pictures.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>

namespace {

constexpr std::uint32_t km_ScreenColors = 16;

NvColorTable GrayTable(std::uint32_t inSize) {
    NvColorTable table(inSize);
    for (std::uint32_t i = 0; i < inSize; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 255 / (inSize - 1));
        table.SetColor(i, {level, level, level});
    }
    return table;
}

/** Panels of 64 by 48 pixels, with lines of eight-pixel letters in every other one. */
std::uint32_t ScreenPixel(std::uint32_t inX, std::uint32_t inY) {
    const std::uint32_t panel = (inX / 64) * 7 + (inY / 48) * 5;
    const bool hasText = panel % 2 == 1 && inY % 12 < 8 && inX % 8 < 6;
    const std::uint32_t letter = (inX / 8) * 131 + (inY / 12) * 71;
    const bool isInk = hasText && ((letter >> (inX % 8 + inY % 12)) & 1U) != 0;
    return isInk ? 15 : panel % 11;
}

std::uint32_t PhotoLevel(std::uint32_t inX, std::uint32_t inY) {
    return (inX * 3 + inY * 2 + (inX * inY) / 97) / 5 % 224;
}

std::uint32_t DitherThreshold(std::uint32_t inX, std::uint32_t inY) {
    constexpr std::uint32_t km_Bayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    return km_Bayer[inY % 4][inX % 4];
}

std::uint32_t PixelOf(PictureKind inKind, std::uint32_t inX, std::uint32_t inY, std::mt19937& ioRandom) {
    switch (inKind) {
    case PictureKind::km_Screen:
        return ScreenPixel(inX, inY);
    case PictureKind::km_Photo:
        return PhotoLevel(inX, inY) + ioRandom() % 8;
    case PictureKind::km_Dithered:
        return std::min(PhotoLevel(inX, inY) / 16 + (PhotoLevel(inX, inY) % 16 > DitherThreshold(inX, inY)),
                        15U);
    case PictureKind::km_Noise:
        return ioRandom() % 256;
    case PictureKind::km_Difference:
        break;
    }
    const bool moves = inX % 160 < 20 && inY % 120 < 16;
    return moves ? ScreenPixel(inX + 3, inY) : km_ScreenColors - 2;
}

} // namespace

const char* PictureName(PictureKind inKind) {
    switch (inKind) {
    case PictureKind::km_Screen:
        return "screen";
    case PictureKind::km_Photo:
        return "photo";
    case PictureKind::km_Dithered:
        return "dithered";
    case PictureKind::km_Noise:
        return "noise";
    case PictureKind::km_Difference:
        break;
    }
    return "difference";
}

NvIndexedImage DrawPicture(PictureKind inKind, std::uint32_t inWidth, std::uint32_t inHeight) {
    const bool isColorful = inKind == PictureKind::km_Photo || inKind == PictureKind::km_Noise;
    NvIndexedImage image(inWidth, inHeight, GrayTable(isColorful ? 256 : km_ScreenColors));
    std::mt19937 random(1);
    const NvPixelLock pixels(image);
    for (std::uint32_t y = 0; y < inHeight; ++y)
        for (std::uint32_t x = 0; x < inWidth; ++x)
            pixels.Row(y)[x] = static_cast<std::uint8_t>(PixelOf(inKind, x, y, random));
    return image;
}

std::vector<std::string> GIFsToMeasure() {
    std::vector<std::string> paths;
    if (const char* folder = std::getenv("PARVIGIF_BENCH_GIFS"))
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".gif")
                paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}
