#pragma once

#include <cstdint>
#include <string_view>

/** A 64-bit hash for texts and files, where collisions are not forged: FNV-1a (Fowler, Noll, Vo).
 *  @param inSoFar  the hash of what comes before, to hash a text piece by piece */
inline std::uint64_t WnHash(std::string_view inBytes, std::uint64_t inSoFar = 0xcbf29ce484222325) {
    for (const char byte : inBytes)
        inSoFar = (inSoFar ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    return inSoFar;
}
