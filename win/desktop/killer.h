#pragma once

/** What the program does when it cannot continue. */

/** Shows the text under the title "Fatal Error", unless it is null, and ends the process with status 1. */
[[noreturn]] void KillerFatalError(const char* inText);

/** Says that memory ran out; the program continues.
 *  @param inOwner  the window (HWND) that the message belongs to, or null */
void KillerShowOutOfMemory(void* inOwner);
