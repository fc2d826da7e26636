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
 *  Each pixel value has a plane of slots, one for every prefix, and the planes overlap: a slot that is taken
 *  sends a string on to the next free one. Those of five colours never meet, and those of all 256 take 160
 * KB: a small picture touches few pages, and a large one stays in the cache. Thanks to a list of the slots in
 *  use, clearing costs only what was added.
 *
 *  Strings of one colour can also be found by their length: most pixels of real animations lie in long runs,
 *  and a run is then passed over at once instead of pixel by pixel. */
class NvLZWStringTable {
public:
    static constexpr std::uint32_t km_MaxCodes = 4096;

    /** @throws NvErrorCode  2 */
    NvLZWStringTable()
        // The system zeroes pages when they are first touched; most of the slots never are.
        : mEntries(static_cast<std::uint32_t*>(std::calloc(km_Slots, sizeof(std::uint32_t)))) {
        if (!mEntries)
            NvThrow(NvErrorCode::km_OutOfMemory);
        ForgetRuns();
    }

    /** The code of the string, or 0 when it is not in the table (0 is always a root, never a string).
     *  @param inPrefix  below km_MaxCodes
     *  @param inPixel   below 256 */
    std::uint32_t Find(std::uint32_t inPrefix, std::uint32_t inPixel) const {
        const std::uint32_t key = KeyOf(inPrefix, inPixel);
        std::uint32_t slot = SlotOf(inPrefix, inPixel);
        std::uint32_t entry = mEntries[slot];
        // One branch, hardly ever taken: whether the string is there is often a matter of chance.
        while (((entry ^ key) >= km_MaxCodes) & (entry != 0))
            [[unlikely]] entry = mEntries[++slot];
        return entry % km_MaxCodes;
    }

    /** Begins to fetch what Find will ask for. The first question about a string is known before the string
     * in front of it ends. */
    void Prefetch(std::uint32_t inPrefix, std::uint32_t inPixel) const {
        __builtin_prefetch(&mEntries[SlotOf(inPrefix, inPixel)]);
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
        std::uint32_t slot = SlotOf(inPrefix, inPixel);
        while (mEntries[slot] != 0)
            ++slot;
        mEntries[slot] = KeyOf(inPrefix, inPixel) | inCode;
        mUsedSlots[mUsedCount++] = static_cast<std::uint16_t>(slot);
        if (mLongestRuns[inPixel] == inPrefix)
            AddRun(inPrefix, inPixel, inCode);
    }

    /** Strings added since the last Clear. */
    std::uint32_t GetCount() const { return mUsedCount; }

    /** Takes back the last Add, but not what FindRun learned from it: FindRun serves again after a Clear. */
    void RemoveLast() {
        std::uint32_t& entry = mEntries[mUsedSlots[--mUsedCount]];
        const std::uint32_t pixel = entry / km_MaxCodes % 256;
        if (mLongestRuns[pixel] == entry % km_MaxCodes)
            RemoveRun(pixel);
        entry = 0; // nothing was sent on from here since
    }

    void Clear() {
        for (std::uint32_t i = 0; i < mUsedCount; ++i)
            mEntries[mUsedSlots[i]] = 0;
        mUsedCount = 0;
        ForgetRuns();
    }

private:
    // In real frames few strings begin with two to seven pixels of one colour; looking for those costs more
    // in wrong guesses than it saves.
    static constexpr std::uint32_t km_WorthwhileRun = 8;

    // Where planes begin lies within this many slots. Half as many cost a tenth more in noise; planes side by
    // side, 2 MB, a seventh more on real files of many colours.
    static constexpr std::uint32_t km_Spread = 32768;
    static constexpr std::uint32_t km_Step = 20253; // the golden section of it: neighbours end up far apart
    // A plane behind the last beginning, and as much again for strings that are sent on.
    static constexpr std::uint32_t km_Slots = km_Spread + 2 * km_MaxCodes;

    struct FreeMemory {
        void operator()(std::uint32_t* inMemory) const { std::free(inMemory); }
    };

    static std::uint32_t SlotOf(std::uint32_t inPrefix, std::uint32_t inPixel) {
        return inPrefix + inPixel * km_Step % km_Spread;
    }

    /** The bits of an entry above its code. */
    static std::uint32_t KeyOf(std::uint32_t inPrefix, std::uint32_t inPixel) {
        return (inPrefix << 8 | inPixel) * km_MaxCodes;
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

    std::unique_ptr<std::uint32_t[], FreeMemory> mEntries; // prefix, pixel and code of strings; 0: none
    std::array<std::uint16_t, km_MaxCodes> mUsedSlots;     // NOLINT: of those that count all are set
    std::uint32_t mUsedCount = 0;
    std::array<std::uint16_t, 256> mLongestRuns{};         // of each pixel: the code of its longest run
    std::array<std::vector<std::uint16_t>, 256> mRunCodes; // of each pixel: of its runs from 2 pixels on
};
