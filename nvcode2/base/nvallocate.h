#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

#include "nvcode2/base/nverrorcode.h"

/** Allocation in the library's terms: running out of memory raises code 2 and names the caller's place.
 *
 *  Images, tables, strings, lists and file buffers allocate this way. Other standard containers let
 *  std::bad_alloc out, which callers handle like code 2. */

/** What inAllocate returns; code 2 when memory runs out in it. */
template <typename Allocate>
auto NvAllocate(const Allocate& inAllocate, const char* inFileName = __builtin_FILE(),
                std::uint32_t inLine = __builtin_LINE()) {
    try {
        return inAllocate();
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory, inFileName, inLine);
    }
}

/** inCount value-initialised elements, or null for none. */
template <typename Element>
std::unique_ptr<Element[]> NvMakeArray(std::size_t inCount, const char* inFileName = __builtin_FILE(),
                                       std::uint32_t inLine = __builtin_LINE()) {
    if (inCount == 0)
        return nullptr;
    std::unique_ptr<Element[]> array(new (std::nothrow) Element[inCount]());
    if (!array)
        NvThrow(NvErrorCode::km_OutOfMemory, inFileName, inLine);
    return array;
}
