#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/** Called by the fuzzer with each input. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize);

/** Stops the fuzzer, which then keeps the input. */
inline void Require(bool inCondition, const char* inWhat) {
    if (inCondition)
        return;
    std::fprintf(stderr, "not so: %s\n", inWhat);
    std::abort();
}
