#include "nvcode2/image/nvblit.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "nvcode2/base/nvassert.h"

namespace {

using Byte = std::uint8_t;

/** Calls inRow(source row, destination row) for every row, unless there is nothing to convert. */
template <typename RowProc>
void ConvertRows(const Byte* inSrcPtr, std::uint32_t inSrcRowBytes, const NvPixelBlock& inDst,
                 RowProc inRow) {
    const auto [inDstPtr, inDstRowBytes, inWidth, inHeight, channels] = inDst;
    NvAssert((inSrcPtr && inDstPtr) || !inWidth || !inHeight);
    NvAssert((inSrcRowBytes && inDstRowBytes) || !inWidth);
    if (inWidth == 0)
        return;
    for (std::uint32_t y = 0; y < inHeight; ++y)
        inRow(inSrcPtr + std::size_t{y} * inSrcRowBytes, inDstPtr + std::size_t{y} * inDstRowBytes);
}

/** The same for rows changed in place. */
template <typename RowProc>
void ChangeRows(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight,
                RowProc inRow) {
    NvAssert(ioPixelPtr || !inWidth || !inHeight);
    NvAssertText(inRowBytes || !(inWidth && inHeight), "inRowBytes || !(inWidth && inHeight)");
    if (inWidth == 0)
        return;
    for (std::uint32_t y = 0; y < inHeight; ++y)
        inRow(ioPixelPtr + std::size_t{y} * inRowBytes);
}

/** Moves bytes to where others were taken out before them. @return where the next ones go */
Byte* CloseGap(const Byte* inBytes, std::size_t inCount, Byte* outBytes) {
    std::memmove(outBytes, inBytes, inCount);
    return outBytes + inCount;
}

/** A 4-bit sample of a run. */
Byte NibbleAt(const Byte* inPtr, std::uint32_t inIndex) {
    return static_cast<Byte>(inIndex % 2 == 0 ? inPtr[inIndex / 2] >> 4 : inPtr[inIndex / 2] & 15);
}

} // namespace

void NvConvert555ToRGB(const Byte* inSrcPtr, std::uint32_t inSrcRowBytes, const NvPixelBlock& inDst) {
    const std::uint32_t outPixelBytes = inDst.channels;
    NvAssert(outPixelBytes >= 3);
    ConvertRows(inSrcPtr, inSrcRowBytes, inDst, [=](const Byte* inSrc, Byte* outDst) {
        for (std::uint32_t x = 0; x < inDst.width; ++x, inSrc += 2, outDst += outPixelBytes) {
            const unsigned pixel = inSrc[0] | static_cast<unsigned>(inSrc[1]) << 8;
            const unsigned red = pixel >> 10 & 31;
            const unsigned green = pixel >> 5 & 31;
            const unsigned blue = pixel & 31;
            outDst[0] = static_cast<Byte>(red * 8 + red / 4);
            outDst[1] = static_cast<Byte>(green * 8 + green / 4);
            outDst[2] = static_cast<Byte>(blue * 8 + blue % 8);
        }
    });
}

void NvConvert4BytesTo3(const Byte* inSrcPtr, std::uint32_t inSrcRowBytes, Byte* inDstPtr,
                        std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    ConvertRows(inSrcPtr, inSrcRowBytes, {inDstPtr, inDstRowBytes, inWidth, inHeight},
                [=](const Byte* inSrc, Byte* outDst) {
                    for (std::uint32_t x = 0; x < inWidth; ++x, inSrc += 4, outDst += 3)
                        std::copy_n(inSrc, 3, outDst);
                });
}

void NvInterleavePlanes(const Byte* inPixelPtr, Byte* outPixelPtr, std::uint32_t inCount) {
    if (inCount == 0)
        return;
    NvAssert(inPixelPtr);
    NvAssert(outPixelPtr);
    const Byte* const green = inPixelPtr + inCount;
    const Byte* const blue = green + inCount;
    for (std::uint32_t i = 0; i < inCount; ++i, outPixelPtr += 3) {
        outPixelPtr[0] = inPixelPtr[i];
        outPixelPtr[1] = green[i];
        outPixelPtr[2] = blue[i];
    }
}

void NvConvert16BitTo8(const Byte* inSrcPtr, std::uint32_t inSrcRowBytes, Byte* inDstPtr,
                       std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    ConvertRows(inSrcPtr, inSrcRowBytes, {inDstPtr, inDstRowBytes, inWidth, inHeight},
                [=](const Byte* inSrc, Byte* outDst) {
                    for (std::size_t x = 0; x < inWidth; ++x)
                        outDst[x] = inSrc[x * 2 + 1];
                });
}

void NvConvert4BitTo8(const Byte* inSrcPtr, std::uint32_t inSrcRowBytes, Byte* inDstPtr,
                      std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    ConvertRows(inSrcPtr, inSrcRowBytes, {inDstPtr, inDstRowBytes, inWidth, inHeight},
                [=](const Byte* inSrc, Byte* outDst) {
                    for (std::uint32_t x = 0; x < inWidth; ++x)
                        outDst[x] = NibbleAt(inSrc, x);
                });
}

void NvConvert4BitTo16(const Byte* inPixelPtr, std::uint16_t* outPixelPtr, std::uint32_t inCount) {
    if (inCount == 0)
        return;
    NvAssert(inPixelPtr);
    NvAssert(outPixelPtr);
    for (std::uint32_t i = 0; i < inCount; ++i)
        outPixelPtr[i] = NibbleAt(inPixelPtr, i);
}

void NvDropChannel(Byte* ioPixelPtr, std::uint32_t inCount, std::uint32_t inChannels,
                   std::uint32_t inChannel) {
    NvAssert(inChannel < inChannels);
    NvAssert(ioPixelPtr || !inCount);
    Byte* out = ioPixelPtr;
    for (std::uint32_t i = 0; i < inCount; ++i, ioPixelPtr += inChannels) {
        out = CloseGap(ioPixelPtr, inChannel, out);
        out = CloseGap(ioPixelPtr + inChannel + 1, inChannels - inChannel - 1, out);
    }
}

void NvKeepChannels(Byte* ioPixelPtr, std::uint32_t inCount, std::uint32_t inChannels,
                    std::uint32_t inKeptChannels) {
    NvAssert(ioPixelPtr || !inCount);
    if (inKeptChannels >= inChannels)
        return;
    Byte* out = ioPixelPtr;
    for (std::uint32_t i = 0; i < inCount; ++i, ioPixelPtr += inChannels)
        out = CloseGap(ioPixelPtr, inKeptChannels, out);
}

void NvInvert(Byte* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth, std::uint32_t inHeight) {
    ChangeRows(ioPixelPtr, inRowBytes, inWidth, inHeight, [=](Byte* ioRow) {
        std::transform(ioRow, ioRow + inWidth, ioRow, [](Byte inByte) { return static_cast<Byte>(~inByte); });
    });
}

void NvSwapChannels(const NvPixelBlock& ioPixels, std::uint32_t inChannelA, std::uint32_t inChannelB) {
    const auto [ioPixelPtr, rowBytes, width, height, inChannels] = ioPixels;
    NvAssert(inChannelA < inChannels);
    NvAssert(inChannelB < inChannels);
    NvAssertText(ioPixelPtr || !width || !height, "ioPixelPtr");
    ChangeRows(ioPixelPtr, rowBytes, width, height, [&](Byte* ioRow) {
        for (std::uint32_t x = 0; x < ioPixels.width; ++x, ioRow += ioPixels.channels)
            std::swap(ioRow[inChannelA], ioRow[inChannelB]);
    });
}
