#pragma once

#include <windows.h>

/** Where the main window stands and how large it is, kept between runs in the user's preferences. */

void KAppStorePlacement(HWND inWindow);

/** Puts the window back, in the same proportion to the screen's text when its resolution is another one now.
 *  @return false when nothing sensible is stored, or it would lie where there is no screen any more */
bool KAppRestorePlacement(HWND inWindow);
