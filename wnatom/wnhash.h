#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

/** A 64-bit hash for texts and files, where collisions are not forged: FNV-1a (Fowler, Noll, Vo).
 *  @param inSoFar  the hash of what comes before, to hash a text piece by piece */
inline std::uint64_t WnHash(std::string_view inBytes, std::uint64_t inSoFar = 0xcbf29ce484222325) {
    for (const char byte : inBytes)
        inSoFar = (inSoFar ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return inSoFar;
}

/** Another hash, for whole files: eight bytes at a time, the same only on the same machine. */
inline std::uint64_t WnHashFast(std::string_view inBytes, std::uint64_t inSoFar) {
    for (; inBytes.size() >= sizeof inSoFar; inBytes.remove_prefix(sizeof inSoFar)) {
        std::uint64_t word = 0;
        std::memcpy(&word, inBytes.data(), sizeof word);
        inSoFar = (inSoFar ^ word) * 0x9E3779B97F4A7C15;
        inSoFar ^= inSoFar >> 32;
    }
    return WnHash(inBytes, inSoFar);
}
