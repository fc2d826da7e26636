#include "nvcode2/nvassert.h"

#include <cstdio>
#include <cstdlib>

namespace {
NvAssertHook gAssertHook = nullptr;
}

void NvSetAssertHook(NvAssertHook inHook) {
    gAssertHook = inHook;
}

void NvCallAssertHook(const char* inFileName, std::uint32_t inLine) {
    if (gAssertHook)
        gAssertHook(inFileName, inLine);
}

void NvAssertFailed(const char* inExpression, const char* inFileName, std::uint32_t inLine) {
    NvCallAssertHook(inFileName, inLine);
    std::fprintf(stderr, "Assertion failed: \"%s\", file %s, line %u\n", inExpression, inFileName,
                 static_cast<unsigned>(inLine));
    std::fflush(stderr);
    std::abort();
}
