#pragma once

/** From now on the first Ctrl-C (or polite request of the system to end) is only noted; a second one ends the
 *  program at once. Writing to a closed pipe, or
 *  beyond the limit on file sizes, becomes an ordinary error.
 *  @param inEndsReads  whether it also ends a read that waits for standard input; not on Windows */
void TermCatchInterrupts(bool inEndsReads = false);

/** From now on they are left to the process that started this one. */
void TermIgnoreInterrupts();

/** Whether the user asked to stop. */
bool TermIsInterrupted();

/** Ends the program silently, as when the reader of its output has gone away. */
void TermEndOfClosedPipe();
