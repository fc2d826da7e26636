#include <cstdio>

#include "nvcode2/base/nvassert.h"

void NvShowAssertion(const char* inReport) {
    std::fputs(inReport, stderr);
    std::fflush(stderr);
}
