#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

#include "nvcode2/base/nvbytes.h"
#include "nvcode2/base/nverrorcode.h"

/** The strings an LZW encoder has met since its last clear: which code stands for "string of a prefix code,
 *  then this pixel".
 *
 *  A table indexed by pixel and prefix answers with one load; thanks to a list of the slots in use, clearing
 *  costs only what was added, which matters for animations of thousands of tiny frames.
 *
 *  Strings of one colour can also be found by their length: most pixels of real animations lie in long runs,
 *  and a run is then passed over at once instead of pixel by pixel. */
class NvLZWStringTable {
public:
    static constexpr std::uint32_t km_MaxCodes = 4096;

    NvLZWStringTable() { ForgetRuns(); }

    /** Empties the table for pixels of a number of bits.
     *  @param inPixelBits  2 to 8; every pixel asked for afterwards is below 2^inPixelBits
     *  @throws NvErrorCode  2 */
    void Begin(std::uint32_t inPixelBits) {
        Clear();
        if (inPixelBits <= mPixelBits)
            return;
        // The system zeroes pages when they are first touched; most of the table never is.
        mCodes.reset(static_cast<std::uint16_t*>(
            std::calloc(std::size_t{km_MaxCodes} << inPixelBits, sizeof(std::uint16_t))));
        mPixelBits = mCodes ? inPixelBits : 0;
        if (!mCodes)
            NvThrow(NvErrorCode::km_OutOfMemory);
    }

    /** The code of the string, or 0 when it is not in the table (0 is always a root, never a string). */
    std::uint32_t Find(std::uint32_t inPrefix, std::uint32_t inPixel) const {
        return mCodes[SlotOf(inPrefix, inPixel)];
    }

    /** Begins to fetch what Find will ask for. The first question about a string is known before the string
     * in front of it ends. */
    void Prefetch(std::uint32_t inPrefix, std::uint32_t inPixel) const {
        __builtin_prefetch(&mCodes[SlotOf(inPrefix, inPixel)]);
    }

    /** The longest string of one colour in the table that some pixels begin with, if it is worth looking for.
     *  @param inPixels  at least one
     *  @param inCount   how many there are
     *  @param outCode   the string's code
     *  @return          its length; 1 also where fewer than km_WorthwhileRun pixels are alike */
    std::uint32_t FindRun(const std::uint8_t* inPixels, std::uint32_t inCount, std::uint32_t& outCode) const {
        const std::uint8_t pixel = inPixels[0];
        outCode = pixel;
        const auto areAlike = [pixel](const std::uint8_t* inEight) {
            return NvLoadLittleEndian(inEight) == NvEightOf(pixel);
        };
        if (inCount < km_WorthwhileRun || !areAlike(inPixels) || mLongestRuns[pixel] == pixel)
            return 1;
        const std::vector<std::uint16_t>& codes = mRunCodes[pixel];
        const std::uint32_t limit = std::min(inCount, static_cast<std::uint32_t>(codes.size() + 1));
        std::uint32_t length = km_WorthwhileRun;
        while (length + km_WorthwhileRun <= limit && areAlike(inPixels + length))
            length += km_WorthwhileRun;
        while (length < limit && inPixels[length] == pixel)
            ++length;
        length = std::min(length, limit);
        outCode = codes[length - 2];
        return length;
    }

    /** Adds a string that is not in the table. At most km_MaxCodes may be added between two Clear calls. */
    void Add(std::uint32_t inPrefix, std::uint32_t inPixel, std::uint32_t inCode) {
        const std::uint32_t slot = SlotOf(inPrefix, inPixel);
        mCodes[slot] = static_cast<std::uint16_t>(inCode);
        mUsedSlots[mUsedCount++] = slot;
        if (mLongestRuns[inPixel] == inPrefix)
            AddRun(inPrefix, inPixel, inCode);
    }

    /** Strings added since the last Clear. */
    std::uint32_t GetCount() const { return mUsedCount; }

    /** Takes back the last Add, but not what FindRun learned from it: FindRun serves again after a Clear. */
    void RemoveLast() {
        const std::uint32_t slot = mUsedSlots[--mUsedCount];
        const std::uint32_t pixel = slot / km_MaxCodes;
        if (mLongestRuns[pixel] == mCodes[slot])
            RemoveRun(pixel);
        mCodes[slot] = 0;
    }

    void Clear() {
        for (std::uint32_t i = 0; i < mUsedCount; ++i)
            mCodes[mUsedSlots[i]] = 0;
        mUsedCount = 0;
        ForgetRuns();
    }

private:
    // In real frames few strings begin with two to seven pixels of one colour; looking for those costs more
    // in wrong guesses than it saves.
    static constexpr std::uint32_t km_WorthwhileRun = 8;

    struct FreeMemory {
        void operator()(std::uint16_t* inMemory) const { std::free(inMemory); }
    };

    // Strings that end in the same pixel lie side by side. The other order, strings of the same prefix side
    // by side, is as fast on noise and slower by a quarter on real files.
    static std::uint32_t SlotOf(std::uint32_t inPrefix, std::uint32_t inPixel) {
        return inPixel * km_MaxCodes + inPrefix;
    }

    void AddRun(std::uint32_t inPrefix, std::uint32_t inPixel, std::uint32_t inCode) {
        std::vector<std::uint16_t>& codes = mRunCodes[inPixel];
        if (inPrefix == inPixel)
            codes.clear(); // what it holds dates from before the last clear
        codes.push_back(static_cast<std::uint16_t>(inCode));
        mLongestRuns[inPixel] = static_cast<std::uint16_t>(inCode);
    }

    void RemoveRun(std::uint32_t inPixel) {
        std::vector<std::uint16_t>& codes = mRunCodes[inPixel];
        codes.pop_back();
        mLongestRuns[inPixel] = codes.empty() ? static_cast<std::uint16_t>(inPixel) : codes.back();
    }

    void ForgetRuns() { std::iota(mLongestRuns.begin(), mLongestRuns.end(), std::uint16_t{0}); }

    std::unique_ptr<std::uint16_t[], FreeMemory> mCodes; // 0: no such string
    std::uint32_t mPixelBits = 0;                        // that there is room for
    std::array<std::uint32_t, km_MaxCodes> mUsedSlots{};
    std::uint32_t mUsedCount = 0;
    std::array<std::uint16_t, 256> mLongestRuns{};         // of each pixel: the code of its longest run
    std::array<std::vector<std::uint16_t>, 256> mRunCodes; // of each pixel: of its runs from 2 pixels on
};
