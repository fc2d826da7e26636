#pragma once

#include <windows.h>

/** Position and size of the main window, kept between runs in the user's preferences. */

void KAppStorePlacement(HWND inWindow);

/** Puts the window back, scaled to the text of the screen if its resolution has changed.
 *  @return false when nothing sensible is stored, or it would be where there is no screen any more */
bool KAppRestorePlacement(HWND inWindow);
