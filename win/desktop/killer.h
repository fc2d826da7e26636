#pragma once

#include "win/texts/pvtexts.h"

/** What the program does when it cannot continue. Neither asks for memory. */

/** Shows the text, unless it is none, under the title "Fatal Error", and ends the process with status 1. */
[[noreturn]] void KillerFatalError(PvText inText);

/** Says that memory ran out; the program continues.
 *  @param inOwner  the window (HWND) that the message belongs to, or null */
void KillerShowOutOfMemory(void* inOwner);
