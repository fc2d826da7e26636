#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__) && defined(__x86_64__)
#include <emmintrin.h>
#endif

/** Eight bytes at any address as one number, spelled so that compilers make one load or store of it. */

/** The first byte becomes the lowest. */
inline std::uint64_t NvLoadLittleEndian(const std::uint8_t* inBytes) {
    using Word = std::uint64_t;
    if constexpr (std::endian::native == std::endian::little) {
        Word word = 0;
        std::memcpy(&word, inBytes, sizeof word);
        return word;
    }
    return Word{inBytes[0]} | Word{inBytes[1]} << 8 | Word{inBytes[2]} << 16 | Word{inBytes[3]} << 24 |
           Word{inBytes[4]} << 32 | Word{inBytes[5]} << 40 | Word{inBytes[6]} << 48 | Word{inBytes[7]} << 56;
}

/** The lowest byte goes first. */
inline void NvStoreLittleEndian(std::uint8_t* outBytes, std::uint64_t inWord) {
    if constexpr (std::endian::native == std::endian::little)
        std::memcpy(outBytes, &inWord, sizeof inWord);
    else
        for (int i = 0; i < 8; ++i)
            outBytes[i] = static_cast<std::uint8_t>(inWord >> (8 * i));
}

/** The first byte becomes the highest. */
inline std::uint64_t NvLoadBigEndian(const std::uint8_t* inBytes) {
    using Word = std::uint64_t;
    return Word{inBytes[7]} | Word{inBytes[6]} << 8 | Word{inBytes[5]} << 16 | Word{inBytes[4]} << 24 |
           Word{inBytes[3]} << 32 | Word{inBytes[2]} << 40 | Word{inBytes[1]} << 48 | Word{inBytes[0]} << 56;
}

/** Eight times the same byte. */
constexpr std::uint64_t NvEightOf(std::uint8_t inByte) {
    return inByte * 0x0101010101010101U;
}

/** Which of eight bytes are zero: 0x80 for each, 0 for the others.
 *  After "Hacker's Delight", 2nd edition, 6-1. */
constexpr std::uint64_t NvFindZeroBytes(std::uint64_t inBytes) {
    constexpr std::uint64_t km_AllButTop = NvEightOf(0x7F);
    return ~(((inBytes & km_AllButTop) + km_AllButTop) | inBytes | km_AllButTop);
}

/** One bit for each of eight bytes, the first in the top bit: whether it equals inByte. */
inline std::uint8_t NvBitsOfEight(const std::uint8_t* inBytes, std::uint8_t inByte) {
#if defined(__SSE2__) && defined(__x86_64__)
    const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(NvLoadBigEndian(inBytes)));
    const __m128i equal = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(static_cast<char>(inByte)));
    return static_cast<std::uint8_t>(_mm_movemask_epi8(equal));
#else
    const std::uint64_t equal = NvFindZeroBytes(NvLoadBigEndian(inBytes) ^ NvEightOf(inByte));
    // Each bit of the factor moves one byte's flag to its place in the top byte; no two of them collide.
    return static_cast<std::uint8_t>((equal >> 7) * 0x0102040810204080U >> 56);
#endif
}
