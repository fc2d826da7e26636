#pragma once

#include <cstddef>
#include <cstdint>

#include "nvcode2/base/nvgeometry.h"

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

/** Where red, green and blue lie in a pixel of the caller's. Its other bytes are never touched. */
struct NvRGBLayout {
    std::uint32_t pixelBytes = 3;
    std::uint32_t redIndex = 0;
    std::uint32_t greenIndex = 1;
    std::uint32_t blueIndex = 2;
};

/** The caller's pixels, from a point on: where an image's colours go. */
struct NvPixelTarget {
    std::uint8_t* data;     ///< first byte of the first row
    std::uint32_t rowBytes; ///< from one row to the next
    NvPoint point;          ///< where the top left pixel goes
    NvRGBLayout layout;

    /** Whether inWidth pixels from the point on lie within a row. */
    bool HasRoomFor(std::int64_t inWidth) const {
        return point.h >= 0 && point.v >= 0 && (point.h + inWidth) * layout.pixelBytes <= rowBytes;
    }
    /** The pixel at the point. */
    std::uint8_t* First() const {
        return data + static_cast<std::size_t>(point.v) * rowBytes +
               static_cast<std::size_t>(point.h) * layout.pixelBytes;
    }
};
