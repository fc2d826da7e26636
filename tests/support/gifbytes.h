#pragma once

#include <string>
#include <vector>

/** GIF files written as their parts, byte by byte as the format has them. */

using namespace std::string_literals;

inline std::string GIFWord(unsigned inNumber) {
    return {static_cast<char>(inNumber & 0xFF), static_cast<char>(inNumber >> 8)};
}

/** Signature and screen descriptor. A table follows when bit 7 of inPacked is set, of 2^((bits 0-2) + 1)
 *  entries. */
inline std::string GIFHeader(unsigned inWidth, unsigned inHeight, unsigned inPacked,
                             const std::string& inVersion = "89a") {
    return "GIF" + inVersion + GIFWord(inWidth) + GIFWord(inHeight) + static_cast<char>(inPacked) + "\0\0"s;
}

/** inSize entries, entry i grey (i, i, i). */
inline std::string GIFTable(unsigned inSize) {
    std::string table;
    for (unsigned i = 0; i < inSize; ++i)
        table += std::string(3, static_cast<char>(i));
    return table;
}

/** Separator and image descriptor. */
inline std::string GIFDescriptor(unsigned inLeft, unsigned inTop, unsigned inWidth, unsigned inHeight,
                                 unsigned inPacked) {
    return ',' + GIFWord(inLeft) + GIFWord(inTop) + GIFWord(inWidth) + GIFWord(inHeight) +
           static_cast<char>(inPacked);
}

/** An extension of sub-blocks of at most 255 bytes, which get their lengths and the terminator here. */
inline std::string GIFExtension(unsigned inLabel, const std::vector<std::string>& inSubBlocks) {
    std::string bytes = "!"s + static_cast<char>(inLabel);
    for (const std::string& block : inSubBlocks)
        bytes += static_cast<char>(block.size()) + block;
    return bytes + '\0';
}

inline std::string GIFComment(const std::vector<std::string>& inSubBlocks) {
    return GIFExtension(0xFE, inSubBlocks);
}

inline std::string GIFApplication(const std::vector<std::string>& inSubBlocks) {
    return GIFExtension(0xFF, inSubBlocks);
}

inline std::string GIFControl(unsigned inPacked, unsigned inDelay, unsigned inTransparentIndex) {
    return GIFExtension(
        0xF9, {static_cast<char>(inPacked) + GIFWord(inDelay) + static_cast<char>(inTransparentIndex)});
}

/** Image data of one pixel of index 1: clear 4, 1, end 5 in codes of 3 bits. */
const std::string km_OnePixelData = "\x02\x02\x4C\x01\x00"s;

/** A frame of that pixel, at the screen's corner and without a table of its own. */
const std::string km_OnePixelFrame = GIFDescriptor(0, 0, 1, 1, 0) + km_OnePixelData;

/** A screen of 1 x 1 with two greys. */
const std::string km_SmallHeader = GIFHeader(1, 1, 0x80) + GIFTable(2);
