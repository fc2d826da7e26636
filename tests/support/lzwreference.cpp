#include "tests/support/lzwreference.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <unordered_map>

namespace {

constexpr std::uint32_t km_EndOfFile = 18;
constexpr std::uint32_t km_Malformed = 28;

unsigned ByteAt(const std::string& inBytes, std::size_t inPosition) {
    return static_cast<unsigned char>(inBytes[inPosition]);
}

/** Reads the bits of all whole sub-blocks. */
class BitReader {
public:
    BitReader(const std::string& inStream, std::size_t inPosition) {
        while (inPosition < inStream.size()) {
            const std::size_t length = ByteAt(inStream, inPosition++);
            if (length == 0)
                return;
            if (inPosition + length > inStream.size())
                break;
            mBytes += inStream.substr(inPosition, length);
            inPosition += length;
        }
        mIsCut = true;
    }

    /** Nothing when there are not that many bits any more. */
    std::optional<unsigned> Read(unsigned inBits) {
        if (mPosition + inBits > mBytes.size() * 8)
            return std::nullopt;
        unsigned code = 0;
        for (unsigned i = 0; i < inBits; ++i, ++mPosition)
            code |= (ByteAt(mBytes, mPosition / 8) >> mPosition % 8 & 1U) << i;
        return code;
    }

    /** Whether the file ends before the sub-blocks do. */
    bool IsCut() const { return mIsCut; }

private:
    std::string mBytes;
    std::size_t mPosition = 0; // bits
    bool mIsCut = false;
};

} // namespace

std::string PackLZWCodes(const std::vector<LZWCode>& inCodes) {
    std::vector<bool> bits;
    for (const LZWCode& code : inCodes)
        for (unsigned i = 0; i < code.mBits; ++i)
            bits.push_back(i < 32 && (code.mCode >> i & 1U) != 0);
    std::string bytes((bits.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (bits[i])
            bytes[i / 8] = static_cast<char>(ByteAt(bytes, i / 8) | 1U << i % 8);
    std::string blocks;
    for (std::size_t start = 0; start < bytes.size(); start += 255) {
        const std::string block = bytes.substr(start, 255);
        blocks += static_cast<char>(block.size()) + block;
    }
    return blocks + '\0';
}

std::vector<LZWCode> ReferenceLZWCodes(unsigned inMinimumCodeSize, const Indices& inPixels) {
    const unsigned clear = 1U << std::max(inMinimumCodeSize, 2U);
    std::unordered_map<unsigned, unsigned>
        table; // code of a string by that of all but its last pixel, which follows
    std::vector<LZWCode> codes;
    unsigned sinceClear = 0;
    // The width is the reader's: it has defined a code for every one read since the clear but the first.
    const auto put = [&](unsigned inCode) {
        const unsigned readerNext = clear + 2 + (sinceClear > 0 ? sinceClear - 1 : 0);
        codes.push_back({inCode, std::min(static_cast<unsigned>(std::bit_width(readerNext)), 12U)});
        ++sinceClear;
    };
    const auto putClear = [&] {
        put(clear);
        sinceClear = 0;
        table.clear();
    };

    putClear();
    std::optional<unsigned> string;
    for (const unsigned pixel : inPixels) {
        if (!string) {
            string = pixel;
            continue;
        }
        const unsigned longer = *string << 8 | pixel;
        if (const auto known = table.find(longer); known != table.end()) {
            string = known->second;
            continue;
        }
        put(*string);
        const unsigned code = clear + 2 + static_cast<unsigned>(table.size());
        table[longer] = code;
        if (code == 4095)
            putClear();
        string = pixel;
    }
    if (string)
        put(*string);
    put(clear + 1);
    return codes;
}

std::string ReferenceLZWEncode(unsigned inMinimumCodeSize, const Indices& inPixels) {
    return static_cast<char>(std::max(inMinimumCodeSize, 2U)) +
           PackLZWCodes(ReferenceLZWCodes(inMinimumCodeSize, inPixels));
}

LZWDecoded ReferenceLZWDecode(const std::string& inStream, std::size_t inPixelCount) {
    LZWDecoded result;
    const auto fail = [&result](std::uint32_t inError) {
        if (!result.mIsUndefined)
            result.mSound = result.mPixels.size();
        result.mError = inError;
        return result;
    };
    if (inStream.empty())
        return fail(km_EndOfFile);
    const unsigned minimumCodeSize = ByteAt(inStream, 0);
    if (minimumCodeSize < 1 || minimumCodeSize > 11)
        return fail(km_Malformed);
    const unsigned clear = 1U << minimumCodeSize;

    BitReader bits(inStream, 1);
    std::vector<Indices> strings; // by code; empty where there is nothing to show
    unsigned width = 0;
    std::optional<unsigned> previous;
    Indices previousString;
    const auto reset = [&] {
        strings.assign(clear + 2, {});
        for (unsigned root = 0; root < std::min(clear, 256U); ++root)
            strings[root] = {static_cast<std::uint8_t>(root)};
        width = minimumCodeSize + 1;
        previous.reset();
    };
    reset();
    bool hasEnded = false;
    const auto read = [&] {
        const auto code = bits.Read(width);
        hasEnded = !code || *code == clear + 1;
        return code;
    };
    while (result.mPixels.size() < inPixelCount) {
        const auto code = read();
        if (!code && bits.IsCut())
            return fail(km_EndOfFile);
        if (hasEnded)
            break;
        if (*code == clear) {
            reset();
            continue;
        }
        if (previous) {
            // A code not defined yet stands for the one about to be: the string before and its own first
            // pixel.
            const bool isNew = *code >= strings.size();
            if (*code > strings.size() && !result.mIsUndefined) {
                result.mIsUndefined = true;
                result.mSound = result.mPixels.size();
            }
            Indices added = *previous < strings.size() ? strings[*previous] : Indices{};
            const Indices shown = isNew ? previousString : strings[*code];
            if (shown.empty() || (isNew && added.empty()))
                return fail(km_Malformed);
            if (!added.empty())
                added.push_back(shown.front());
            if (strings.size() < 4096)
                strings.push_back(added);
            if (strings.size() >= 1U << width && width < 12)
                ++width;
            previousString = isNew ? added : shown;
        } else {
            if (*code > clear || *code > 255)
                return fail(km_Malformed);
            previousString = {static_cast<std::uint8_t>(*code)};
        }
        previous = code;
        result.mPixels.insert(result.mPixels.end(), previousString.begin(), previousString.end());
    }
    const bool isExact = result.mPixels.size() == inPixelCount;
    result.mRunsOver = result.mPixels.size() > inPixelCount;
    result.mPixels.resize(std::min(result.mPixels.size(), inPixelCount));
    if (!result.mIsUndefined)
        result.mSound = result.mPixels.size();
    if (minimumCodeSize == 1) {
        if (!isExact)
            return fail(km_Malformed);
        if (!hasEnded && !read() && bits.IsCut())
            return fail(km_EndOfFile);
        if (!hasEnded)
            return fail(km_Malformed);
    }
    while (!hasEnded && !result.mRunsOver) {
        const auto code = read();
        if (!code && bits.IsCut())
            return fail(km_EndOfFile);
        result.mRunsOver = !hasEnded && *code != clear;
        width = minimumCodeSize + 1;
    }
    return result;
}
