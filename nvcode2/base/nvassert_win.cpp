#include <cstdio>

#include <windows.h>

#include "nvcode2/base/nvassert.h"

void NvShowAssertion(const char* inReport) {
    const HANDLE errors = GetStdHandle(STD_ERROR_HANDLE);
    if (errors && errors != INVALID_HANDLE_VALUE) {
        std::fputs(inReport, stderr);
        std::fflush(stderr);
    } else {
        MessageBoxA(nullptr, inReport, "Parvigif", MB_ICONHAND | MB_TASKMODAL);
    }
}
