#pragma once

#include <cstdint>

/** A rectangle of pixels in memory that its user borrows for a call: row after row, the top one first.
 *
 *  A channel is a byte unless a routine says otherwise. */
struct NvConstPixelBlock {
    const std::uint8_t* data;   ///< first byte of the top row
    std::uint32_t rowBytes;     ///< from one row to the next
    std::uint32_t width;        ///< pixels
    std::uint32_t height;       ///< pixels
    std::uint32_t channels = 1; ///< of each pixel
};

/** The same, to be written. */
struct NvPixelBlock {
    std::uint8_t* data;
    std::uint32_t rowBytes;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t channels = 1;

    operator NvConstPixelBlock() const { return {data, rowBytes, width, height, channels}; }
};
