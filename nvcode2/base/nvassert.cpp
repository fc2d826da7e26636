#include "nvcode2/base/nvassert.h"

#include <array>
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
    std::array<char, 1024> report{};
    std::snprintf(report.data(), report.size(), "Assertion failed: \"%s\", file %s, line %u\n", inExpression,
                  inFileName, static_cast<unsigned>(inLine));
    NvShowAssertion(report.data());
    std::abort();
}
