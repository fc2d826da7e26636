#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "nvcode2/base/nverrorcode.h"

/** Allocation in the library's terms: running out of memory raises code 2, never std::bad_alloc. */

/** An object of its own; code 2 when it, or what its constructor allocates, does not fit. */
template <typename Type, typename... Arguments>
std::unique_ptr<Type> NvMakeUnique(Arguments&&... inArguments) {
    try {
        return std::make_unique<Type>(std::forward<Arguments>(inArguments)...);
    } catch (const std::bad_alloc&) {
        NvThrow(NvErrorCode::km_OutOfMemory);
    }
}

/** inCount value-initialised elements, or null for none. */
template <typename Element>
std::unique_ptr<Element[]> NvMakeArray(std::size_t inCount) {
    if (inCount == 0)
        return nullptr;
    std::unique_ptr<Element[]> array(new (std::nothrow) Element[inCount]());
    if (!array)
        NvThrow(NvErrorCode::km_OutOfMemory);
    return array;
}
