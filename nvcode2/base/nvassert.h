#pragma once

#include <cstdint>

/** Checks of the program's own contracts, active in the shipped program.
 *
 *  A failed assertion is a mistake of ours: it reports the expression, file and line and ends the process.
 *  Nothing that a file can contain may ever reach one; bad bytes raise an NvErrorCode instead. */

/** Called with the source file and line before a failed assertion is reported. */
using NvAssertHook = void (*)(const char* inFileName, std::uint32_t inLine);

/** Installs the process-wide assertion hook, for debugging and tools; nullptr (the default) removes it. */
void NvSetAssertHook(NvAssertHook inHook);

/** Forwards to the assertion hook when one is set. For contract checks that do not end the process. */
void NvCallAssertHook(const char* inFileName, std::uint32_t inLine);

/** Shows the report of a failed assertion, one line: on standard error or, in a program without one, in a
 *  message box. One body per platform. */
void NvShowAssertion(const char* inReport);

/** Calls the hook, shows the failure and aborts. */
[[noreturn]] void NvAssertFailed(const char* inExpression, const char* inFileName, std::uint32_t inLine);

/** Ends the process, quoting the expression as written, when it is false. */
#define NvAssert(inExpression)                                                                               \
    ((inExpression) ? static_cast<void>(0) : NvAssertFailed(#inExpression, __FILE__, __LINE__))

/** The same, quoting a fixed text instead of the expression. */
#define NvAssertText(inExpression, inText)                                                                   \
    ((inExpression) ? static_cast<void>(0) : NvAssertFailed(inText, __FILE__, __LINE__))
