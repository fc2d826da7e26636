#pragma once

#include "tests/support/testgif.h"

/** Numbers that are the same everywhere, unlike those of the standard distributions. */
class TestRandom {
public:
    explicit TestRandom(std::uint32_t inSeed) : mState(inSeed * 0x9E3779B97F4A7C15U + 1) {}

    /** 0 to inLimit - 1. */
    std::uint32_t Below(std::uint32_t inLimit) {
        mState = mState * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>((mState >> 33) % inLimit);
    }
    bool Chance(std::uint32_t inPercent) { return Below(100) < inPercent; }

private:
    std::uint64_t mState;
};

enum class TestTexture { km_Noise, km_Dither, km_Gradient, km_Boxes, km_Text, km_Sparse };
inline constexpr std::uint32_t km_TextureCount = 6;

/** Pixels of a kind that real pictures hold, with indices below inColors. */
std::vector<std::uint8_t> RandomPixels(TestRandom& ioRandom, TestTexture inTexture, std::uint32_t inWidth,
                                       std::uint32_t inHeight, std::uint32_t inColors);

/** A small animation with everything the format allows: local and global tables, every disposal,
 *  transparency inside and outside the table, interlacing, delays, user input, loop, comments, data cut
 *  short, indices without an entry. */
TestGIF RandomGIF(std::uint32_t inSeed);

/** One whose data are complete, with every index in its table. */
TestGIF SoundRandomGIF(std::uint32_t inSeed);

/** A square frame of that texture. */
TestFrame Textured(TestTexture inTexture, std::uint32_t inSize, std::uint32_t inColors, std::uint32_t inSeed);
