#include "win/optimizer/codes/pvlzwparser.h"

#include <algorithm>

namespace {

constexpr std::uint32_t km_MaxCodeSize = 12; // bits

std::uint32_t FirstFreeCode(std::uint32_t inPixelBits) {
    return (1U << inPixelBits) + 2;
}

/** Bits of the first codes behind a clear code. Each is one code narrower than the number of strings by
 *  then asks for. */
std::uint64_t SumWidths(std::uint32_t inPixelBits, std::uint64_t inCodes) {
    std::uint64_t bits = 0;
    std::uint64_t done = 0;
    for (std::uint32_t width = inPixelBits + 1; done < inCodes; ++width) {
        const std::uint64_t codesUpToWidth = (1U << width) + 1 - FirstFreeCode(inPixelBits);
        const std::uint64_t end = width < km_MaxCodeSize ? std::min(inCodes, codesUpToWidth) : inCodes;
        bits += (end - done) * width;
        done = end;
    }
    return bits;
}

} // namespace

void PvLZWParser::Begin(std::uint32_t inPixelBits) {
    mTable.Clear();
    mFirstFreeCode = FirstFreeCode(inPixelBits);
    mCapacity = NvLZWStringTable::km_MaxCodes - mFirstFreeCode;
}

void PvLZWParser::Start(std::uint8_t inPixel) {
    mTable.Clear();
    mPrefix = inPixel;
}

bool PvLZWParser::Read(const std::uint8_t* inPixels, std::uint32_t inEnd, std::uint32_t& ioNext,
                       std::uint32_t inLimit) {
    NvLZWStringTable& table = mTable;
    std::uint32_t next = ioNext;
    std::uint32_t prefix = mPrefix;
    bool isFull = false;
    while (next < inEnd) {
        const std::uint32_t pixel = inPixels[next];
        if (const std::uint32_t code = table.Find(prefix, pixel)) {
            prefix = code;
            ++next;
            continue;
        }
        table.Add(prefix, pixel, mFirstFreeCode + table.GetCount());
        isFull = table.GetCount() >= inLimit;
        if (isFull)
            break;
        next += table.FindRun(inPixels + next, inEnd - next, prefix);
    }
    ioNext = next;
    mPrefix = prefix;
    return isFull;
}

void PvLZWParser::Restore(const State& inState) {
    while (mTable.GetCount() > inState.mMisses)
        mTable.RemoveLast();
    mPrefix = inState.mPrefix;
}

std::uint64_t PvLZWParser::CountMisses(const std::uint8_t* inPixels, std::uint32_t inCount,
                                       std::uint64_t inToBeat) {
    std::uint64_t misses = 0;
    std::uint32_t next = 0;
    do {
        const std::uint64_t limit = std::min<std::uint64_t>(mCapacity, inToBeat - misses);
        Start(inPixels[next++]);
        Read(inPixels, inCount, next, static_cast<std::uint32_t>(limit));
        misses += mTable.GetCount();
    } while (next < inCount && misses < inToBeat);
    return misses;
}

std::uint64_t PvLZWBits(std::uint32_t inPixelBits, std::uint64_t inMisses) {
    const std::uint32_t capacity = NvLZWStringTable::km_MaxCodes - FirstFreeCode(inPixelBits);
    const std::uint64_t fullTables = inMisses / capacity;
    return (inPixelBits + 1) + fullTables * (SumWidths(inPixelBits, capacity) + km_MaxCodeSize) +
           SumWidths(inPixelBits, inMisses % capacity + 2);
}
