#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/** Counts indices. Neighbouring pixels go to different sets of counts, so that a run of one colour does not
 *  wait for its own last store. */
class NvIndexCounter {
public:
    /** A run of pixels. */
    void AddRun(const std::uint8_t* inIndices, std::size_t inCount) {
        std::size_t i = 0;
        for (; i + 4 <= inCount; i += 4) {
            ++mCounts[0][inIndices[i]];
            ++mCounts[1][inIndices[i + 1]];
            ++mCounts[2][inIndices[i + 2]];
            ++mCounts[3][inIndices[i + 3]];
        }
        for (; i < inCount; ++i)
            ++mCounts[0][inIndices[i]];
    }

    /** The pixels whose bit is set; the top bit is the first pixel. */
    void AddBits(const std::uint8_t* inIndices, unsigned inBits) {
        for (; inBits != 0; inBits &= inBits - 1) {
            const int column = 7 - std::countr_zero(inBits);
            ++mCounts[static_cast<std::size_t>(column) % 4][inIndices[column]];
        }
    }

    /** One row under its mask, whose whole bytes of set or clear bits cost one look each; inFlip turns the
     *  mask's bytes into set bits. */
    void AddMasked(const std::uint8_t* inIndices, const std::uint8_t* inMask, unsigned inFlip,
                   std::size_t inWidth) {
        const std::size_t wholeBytes = inWidth / 8;
        const auto bits = [=](std::size_t inByte) { return inMask[inByte] ^ inFlip; };
        for (std::size_t i = 0; i < wholeBytes; ++i) {
            const std::size_t first = i;
            while (i < wholeBytes && bits(i) == 0xFF)
                ++i;
            AddRun(inIndices + first * 8, (i - first) * 8);
            if (i < wholeBytes)
                AddBits(inIndices + i * 8, bits(i));
        }
        if (inWidth % 8 != 0)
            AddBits(inIndices + wholeBytes * 8, bits(wholeBytes) & 0xFF00u >> inWidth % 8 & 0xFFu);
    }

    /** Writes the counts of the indices below inSize. */
    void Write(std::uint32_t* outHistogram, std::uint32_t inSize) const {
        for (std::size_t i = 0; i < inSize; ++i)
            outHistogram[i] = i < 256 ? mCounts[0][i] + mCounts[1][i] + mCounts[2][i] + mCounts[3][i] : 0;
    }

private:
    std::array<std::array<std::uint32_t, 256>, 4> mCounts{};
};
