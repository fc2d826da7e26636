#pragma once

#include <array>
#include <cstdint>
#include <vector>

/** The strings an LZW encoder has met since its last clear: which code stands for "string of a prefix code,
 * then this pixel".
 *
 *  A direct table indexed by prefix and pixel, so that the question costs one load; a list of the slots in
 * use makes clearing cost only what was added, which matters for animations of thousands of tiny frames. */
class NvLZWStringTable {
public:
    static constexpr std::uint32_t km_MaxCodes = 4096;

    /** Empties the table for pixels of a number of bits.
     *  @param inPixelBits  2 to 8; every pixel asked for afterwards is below 2^inPixelBits */
    void Begin(std::uint32_t inPixelBits) {
        Clear();
        mPixelBits = inPixelBits;
        const std::size_t slots = std::size_t{km_MaxCodes} << inPixelBits;
        if (mCodes.size() < slots)
            mCodes.resize(slots, 0);
    }

    /** The code of the string, or 0 when it is not in the table (0 is always a root, never a string). */
    std::uint32_t Find(std::uint32_t inPrefix, std::uint32_t inPixel) const {
        return mCodes[(inPrefix << mPixelBits) | inPixel];
    }

    /** Adds a string that is not in the table. At most km_MaxCodes may be added between two Clear calls. */
    void Add(std::uint32_t inPrefix, std::uint32_t inPixel, std::uint32_t inCode) {
        const std::uint32_t slot = (inPrefix << mPixelBits) | inPixel;
        mCodes[slot] = static_cast<std::uint16_t>(inCode);
        mUsedSlots[mUsedCount++] = slot;
    }

    void Clear() {
        for (std::uint32_t i = 0; i < mUsedCount; ++i)
            mCodes[mUsedSlots[i]] = 0;
        mUsedCount = 0;
    }

private:
    std::vector<std::uint16_t> mCodes;
    std::array<std::uint32_t, km_MaxCodes> mUsedSlots{};
    std::uint32_t mUsedCount = 0;
    std::uint32_t mPixelBits = 2;
};
