#pragma once

/** POSIX only. */

/** Has a handler called from now on, unless whoever started the program wants the signal ignored. System
 *  calls go on behind it, so that no file operation fails of it, unless what waits is to end (EINTR). */
void TermCatchSignal(int inSignal, void (*inHandler)(int), bool inEndsReads = false);

/** Does to the program what the signal does when nothing catches it. For use in handlers, too. */
void TermRaiseWithDefault(int inSignal);
