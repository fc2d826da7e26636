#pragma once

#include <algorithm>

/** The exit status. In order of severity: the worst that happened counts. */
enum class TermExit : int {
    km_Success = 0,     ///< every file was handled: made smaller or found unchanged
    km_Failure = 1,     ///< at least one file, or name, could not be handled
    km_Usage = 2,       ///< wrong usage; nothing was done
    km_NothingDone = 3, ///< no file that was named is one to work on
    km_Cancelled = 130, ///< the user stopped the run
};

/** The status of two things that happened: a later success never hides a failure. */
constexpr TermExit TermWorse(TermExit inFirst, TermExit inSecond) {
    return std::max(inFirst, inSecond);
}
