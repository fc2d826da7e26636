#pragma once

#include <array>
#include <cstdint>

/** The order in which a GIF stores the rows of an interlaced frame: four passes over the same picture. */
struct NvInterlacePass {
    std::uint32_t mStart; ///< first row
    std::uint32_t mStep;  ///< rows from one to the next

    /** How many rows of a picture belong to this pass; 0 when the picture is too low to have any. */
    constexpr std::uint32_t CountRows(std::uint32_t inHeight) const {
        return inHeight > mStart ? (inHeight - mStart + mStep - 1) / mStep : 0;
    }
};

inline constexpr std::array<NvInterlacePass, 4> km_InterlacePasses{{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};

/** Calls inVisit(row) for every row of a frame in the order in which the file holds them. */
template <typename Visitor>
void NvForEachRowInFileOrder(std::uint32_t inHeight, bool inInterlaced, Visitor inVisit) {
    if (!inInterlaced) {
        for (std::uint32_t row = 0; row < inHeight; ++row)
            inVisit(row);
        return;
    }
    for (const NvInterlacePass& pass : km_InterlacePasses)
        for (std::uint32_t row = pass.mStart; row < inHeight; row += pass.mStep)
            inVisit(row);
}
