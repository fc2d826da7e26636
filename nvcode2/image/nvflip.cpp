#include "nvcode2/image/nvflip.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "nvcode2/base/nvassert.h"

namespace {

using Byte = std::uint8_t;

template <typename RowProc>
void MirrorEveryRow(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight,
                    RowProc inMirrorRow) {
    NvAssert(inRowBytes || !(inWidth && inHeight));
    if (inWidth == 0)
        return;
    for (std::uint32_t y = 0; y < inHeight; ++y)
        inMirrorRow(ioPixelPtr + std::size_t{y} * inRowBytes);
}

/** Pixel k of inPixelBytes bytes changes places with pixel inWidth - 1 - k. */
void MirrorRow(Byte* ioRow, std::size_t inWidth, std::size_t inPixelBytes) {
    Byte* left = ioRow;
    Byte* right = ioRow + inWidth * inPixelBytes;
    for (std::size_t k = 0; k < inWidth / 2; ++k) {
        right -= inPixelBytes;
        std::swap_ranges(left, left + inPixelBytes, right);
        left += inPixelBytes;
    }
}

constexpr Byte ReverseBits(unsigned inByte) {
    unsigned result = 0;
    for (int bit = 0; bit < 8; ++bit)
        result = result << 1 | (inByte >> bit & 1);
    return static_cast<Byte>(result);
}

constexpr std::array<Byte, 256> km_ReversedBits = [] {
    std::array<Byte, 256> table{};
    for (unsigned i = 0; i < 256; ++i)
        table[i] = ReverseBits(i);
    return table;
}();

/** Reverses whole bytes, then moves the row left over the padding that came to the front. */
void MirrorBitRow(Byte* ioRow, std::size_t inWidth) {
    const std::size_t bytes = (inWidth + 7) / 8;
    const unsigned padding = static_cast<unsigned>(bytes * 8 - inWidth);
    std::reverse(ioRow, ioRow + bytes);
    std::transform(ioRow, ioRow + bytes, ioRow, [](Byte inByte) { return km_ReversedBits[inByte]; });
    for (std::size_t i = 0; i < bytes; ++i) {
        const unsigned next = i + 1 < bytes ? ioRow[i + 1] : 0u;
        ioRow[i] = static_cast<Byte>((unsigned{ioRow[i]} << 8 | next) << padding >> 8);
    }
}

} // namespace

void NvMirrorBytes(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                   std::uint32_t inHeight) {
    MirrorEveryRow(ioPixelPtr, inRowBytes, inWidth, inHeight,
                   [=](Byte* ioRow) { std::reverse(ioRow, ioRow + inWidth); });
}

void NvMirror4BytePixels(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                         std::uint32_t inHeight) {
    MirrorEveryRow(ioPixelPtr, inRowBytes, inWidth, inHeight,
                   [=](Byte* ioRow) { MirrorRow(ioRow, inWidth, 4); });
}

void NvMirrorPixels(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight,
                    std::uint32_t inChannels) {
    MirrorEveryRow(ioPixelPtr, inRowBytes, inWidth, inHeight,
                   [=](Byte* ioRow) { MirrorRow(ioRow, inWidth, inChannels); });
}

void NvMirrorBits(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    MirrorEveryRow(ioPixelPtr, inRowBytes, inWidth, inHeight,
                   [=](Byte* ioRow) { MirrorBitRow(ioRow, inWidth); });
}

void NvMirrorRows(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    NvAssert(inRowBytes || !(inWidth && inHeight));
    if (inWidth == 0 || inHeight == 0)
        return;
    Byte* top = ioPixelPtr;
    Byte* bottom = ioPixelPtr + std::size_t{inHeight - 1} * inRowBytes;
    for (; top < bottom; top += inRowBytes, bottom -= inRowBytes)
        std::swap_ranges(top, top + inRowBytes, bottom);
}
