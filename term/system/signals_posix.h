#pragma once

/** POSIX only. */

/** Installs a handler, unless the program was started with the signal ignored. System calls are resumed
 *  after it, so that no file operation fails because of it, unless waiting calls are to end (EINTR). */
void TermCatchSignal(int inSignal, void (*inHandler)(int), bool inEndsReads = false);

/** Does to the program what the signal does when nothing catches it. Handlers may call it. */
void TermRaiseWithDefault(int inSignal);
