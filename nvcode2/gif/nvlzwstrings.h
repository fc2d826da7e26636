#pragma once

#include <cstdint>
#include <vector>

/** One of the strings that an LZW stream is cut into. */
struct NvLZWString {
    std::uint32_t mLength = 0; ///< pixels, at least 1
    bool mClears = false;      ///< whether a clear code follows it
};

/** How all pixels of a frame are cut into strings, in the order of the file. Each string but single pixels
 *  must have been added to the table before, which the frame's writer asserts. */
using NvLZWStrings = std::vector<NvLZWString>;
