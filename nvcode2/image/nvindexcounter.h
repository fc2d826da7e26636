#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "nvcode2/base/nvbytes.h"

/** Counts indices. Neighbouring pixels go to different sets of counts, so that none waits for the store of
 *  the one before; eight pixels of one colour, which is what most pictures are made of, are one addition. */
class NvIndexCounter {
public:
    /** A run of pixels. */
    void AddRun(const std::uint8_t* inIndices, std::size_t inCount) {
        std::size_t i = 0;
        for (; i + 8 <= inCount; i += 8) {
            const std::uint64_t eight = NvLoadLittleEndian(inIndices + i);
            if (eight == NvEightOf(inIndices[i]))
                mCounts[0][inIndices[i]] += 8;
            else
                AddEight(eight);
        }
        for (; i < inCount; ++i)
            ++mCounts[i % 4][inIndices[i]];
    }

    /** Writes the counts of the indices below inSize. */
    void Write(std::uint32_t* outHistogram, std::uint32_t inSize) const {
        for (std::size_t i = 0; i < inSize; ++i)
            outHistogram[i] = i < 256 ? mCounts[0][i] + mCounts[1][i] + mCounts[2][i] + mCounts[3][i] : 0;
    }

private:
    void AddEight(std::uint64_t inEight) {
        for (std::size_t i = 0; i < 8; ++i)
            ++mCounts[i % 4][inEight >> (8 * i) & 0xFF];
    }

    std::array<std::array<std::uint32_t, 256>, 4> mCounts{};
};
