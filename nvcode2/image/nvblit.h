#pragma once

#include <cstdint>

#include "nvcode2/image/nvpixelblock.h"

/** Conversions between ways to keep pixels in memory, row by row, into the caller's memory or in place.
 *
 *  A width or height of zero does nothing and needs no pointers; otherwise null pointers and row bytes of
 *  zero are assertions. Source and destination do not overlap. Samples of 16 bits are little-endian.
 *
 *  NvInvert and NvSwapChannels serve the image classes. GIF has no use for the others, which bring the
 *  layouts of screens and of uncompressed formats to those of the image classes. */

/** 5-5-5 pixels, red in bits 10-14, to 8 bits a channel, red first. Red and green repeat their top three bits
 *  below the five; blue repeats its low three, as MakeInverseColorMap does.
 *  @param inDst  its size counts; at least 3 channels, of which those beyond three are kept */
void NvConvert555ToRGB(const std::uint8_t* inSrcPtr, std::uint32_t inSrcRowBytes, const NvPixelBlock& inDst);

/** Drops the fourth byte of every pixel. */
void NvConvert4BytesTo3(const std::uint8_t* inSrcPtr, std::uint32_t inSrcRowBytes, std::uint8_t* inDstPtr,
                        std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight);

/** Interleaves three planes of inCount bytes each, which follow one another, into inCount RGB pixels. */
void NvInterleavePlanes(const std::uint8_t* inPixelPtr, std::uint8_t* outPixelPtr, std::uint32_t inCount);

/** Keeps the high byte of every 16-bit sample; inWidth counts samples. */
void NvConvert16BitTo8(const std::uint8_t* inSrcPtr, std::uint32_t inSrcRowBytes, std::uint8_t* inDstPtr,
                       std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight);

/** One byte, 0 to 15, per 4-bit sample; the high half of a byte comes first. inWidth counts samples. */
void NvConvert4BitTo8(const std::uint8_t* inSrcPtr, std::uint32_t inSrcRowBytes, std::uint8_t* inDstPtr,
                      std::uint32_t inDstRowBytes, std::uint32_t inWidth, std::uint32_t inHeight);

/** The same into 16-bit words, for a run of inCount samples. */
void NvConvert4BitTo16(const std::uint8_t* inPixelPtr, std::uint16_t* outPixelPtr, std::uint32_t inCount);

/** Removes channel inChannel of every pixel, closing the gaps. Channels are bytes; the pixels follow one
 *  another before and after. Precondition: inChannel < inChannels. */
void NvDropChannel(std::uint8_t* ioPixelPtr, std::uint32_t inCount, std::uint32_t inChannels,
                   std::uint32_t inChannel);

/** Keeps the first inKeptChannels of every pixel, closing the gaps; nothing happens when there are no
 *  more. */
void NvKeepChannels(std::uint8_t* ioPixelPtr, std::uint32_t inCount, std::uint32_t inChannels,
                    std::uint32_t inKeptChannels);

/** Replaces inWidth bytes of every row by their complements. */
void NvInvert(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
              std::uint32_t inHeight);

/** Exchanges two channels of every pixel. */
void NvSwapChannels(const NvPixelBlock& ioPixels, std::uint32_t inChannelA, std::uint32_t inChannelB);
