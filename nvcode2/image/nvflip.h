#pragma once

#include <cstdint>

/** Mirrors pixels in place for the images' own mirrors. Without width or height nothing happens; otherwise
 *  inRowBytes is the distance from row to row and ioPixelPtr non-null. */

/** Reverses rows of single bytes. */
void NvMirrorBytes(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                   std::uint32_t inHeight);
/** Reverses rows of 4-byte pixels; the bytes within a pixel keep their order. */
void NvMirror4BytePixels(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                         std::uint32_t inHeight);
/** Reverses rows of pixels of inChannels bytes. */
void NvMirrorPixels(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                    std::uint32_t inHeight, std::uint32_t inChannels);
/** Reverses rows of one-bit pixels, the leftmost in the top bit of a byte; padding bits end up 0. */
void NvMirrorBits(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                  std::uint32_t inHeight);
/** Reverses the order of the rows; all bytes of a row move. */
void NvMirrorRows(std::uint8_t* ioPixelPtr, std::uint32_t inRowBytes, std::uint32_t inWidth,
                  std::uint32_t inHeight);
