#pragma once

#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvindexedimage.h"
#include "tests/support/test.h"

/** Small images and tables, written as their contents. */

constexpr NvColor km_Black{0, 0, 0};
constexpr NvColor km_White{255, 255, 255};
constexpr NvColor km_Red{255, 0, 0};
constexpr NvColor km_Green{0, 255, 0};
constexpr NvColor km_Blue{0, 0, 255};

inline NvColorTable MakeTable(const std::vector<NvColor>& inColors) {
    NvColorTable table(static_cast<std::uint32_t>(inColors.size()));
    std::ranges::copy(inColors, table.GetColors());
    return table;
}

inline std::vector<NvColor> ColorsOf(const NvColorTable& inTable) {
    return {inTable.GetColors(), inTable.GetColors() + inTable.GetSize()};
}

/** 0 to inLimit - 1. */
inline std::uint32_t RandomBelow(std::mt19937& ioRandom, std::uint32_t inLimit) {
    return static_cast<std::uint32_t>(ioRandom() % inLimit);
}

inline NvColor RandomColor(std::mt19937& ioRandom) {
    const auto bits = ioRandom();
    return {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
            static_cast<std::uint8_t>(bits >> 16)};
}

inline NvColorTable RandomTable(std::uint32_t inSize, std::mt19937& ioRandom) {
    NvColorTable table(inSize);
    for (std::uint32_t i = 0; i < inSize; ++i)
        table.SetColor(i, RandomColor(ioRandom));
    return table;
}

/** All bytes of an image's rows, padding included. */
inline std::vector<std::uint8_t> BytesOf(const NvRealImage& inImage) {
    const NvConstPixelLock pixels(inImage);
    return {pixels.Row(0), pixels.Row(inImage.GetHeight())};
}

inline void SetBytes(NvRealImage& ioImage, const std::vector<std::uint8_t>& inBytes) {
    const NvPixelLock pixels(ioImage);
    std::ranges::copy(inBytes, pixels.Row(0));
}

/** An indexed image of one row. */
inline NvIndexedImage MakeIndexedRow(const std::vector<std::uint8_t>& inIndices,
                                     const NvColorTable& inTable) {
    NvIndexedImage image(static_cast<std::uint32_t>(inIndices.size()), 1, inTable);
    SetBytes(image, inIndices);
    return image;
}
