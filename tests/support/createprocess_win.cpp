#include <windows.h>

// Under Wine about one new process in three thousand dies before it is up, where cmake/run-wine cannot
// prevent it, and whoever asked for it gets ERROR_INTERNAL_ERROR. Asked again it works. Every test program is
// linked so that its calls of CreateProcess, those of GoogleTest's death tests among them, come here (--wrap
// in tests/CMakeLists.txt).

extern "C" decltype(&CreateProcessA) __real___imp_CreateProcessA; // NOLINT(bugprone-reserved-identifier)
extern "C" decltype(&CreateProcessW) __real___imp_CreateProcessW; // NOLINT(bugprone-reserved-identifier)

namespace {

template <auto& InReal, typename... Arguments>
BOOL WINAPI CreatePatiently(Arguments... inArguments) {
    for (int tries = 1;; ++tries)
        if (InReal(inArguments...))
            return TRUE;
        else if (GetLastError() != ERROR_INTERNAL_ERROR || tries == 5)
            return FALSE;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" decltype(&CreateProcessA) __wrap___imp_CreateProcessA;
extern "C" decltype(&CreateProcessW) __wrap___imp_CreateProcessW;
decltype(&CreateProcessA) __wrap___imp_CreateProcessA = &CreatePatiently<__real___imp_CreateProcessA>;
decltype(&CreateProcessW) __wrap___imp_CreateProcessW = &CreatePatiently<__real___imp_CreateProcessW>;
// NOLINTEND(bugprone-reserved-identifier)
