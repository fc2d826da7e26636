#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** GIF's LZW written down as plainly as it can be said, as a second opinion: strings in a map, one bit at a
 *  time, no care for speed. It shares nothing with the library. */

using Indices = std::vector<std::uint8_t>;

/** A code and the bits it takes. */
struct LZWCode {
    unsigned mCode;
    unsigned mBits;
};

/** Packs codes into bytes, the lowest bit first, and those into data sub-blocks with their terminator. */
std::string PackLZWCodes(const std::vector<LZWCode>& inCodes);

/** The codes of a frame, from its first clear code to the end code.
 *  @param inPixels  in file order, all below 2^inMinimumCodeSize */
std::vector<LZWCode> ReferenceLZWCodes(unsigned inMinimumCodeSize, const Indices& inPixels);

/** The same as a file has them: the code size byte and the data sub-blocks. */
std::string ReferenceLZWEncode(unsigned inMinimumCodeSize, const Indices& inPixels);

struct LZWDecoded {
    Indices mPixels; // those that arrived
    std::uint32_t mError = 0;
    bool mIsUndefined = false; // a code beyond the next free one was read as that
    bool mRunsOver = false;    // the stream has more pixels
    std::size_t mSound = 0;    // pixels up to the first undefined code or error, where browsers stop
};

/** @param inStream     code size byte and data sub-blocks
 *  @param inPixelCount  pixels of the frame, at which reading stops */
LZWDecoded ReferenceLZWDecode(const std::string& inStream, std::size_t inPixelCount);
