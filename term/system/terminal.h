#pragma once

#include <cstddef>
#include <string_view>

/** The terminal as a place to draw on, through standard error, and to read single keys from. While it is
 * held, keys are not echoed and the cursor is hidden; what is drawn starts at the cursor and leaves it there.
 * The terminal is released on every way out of the program, and while the program is stopped (Ctrl-Z). */

/** Whether standard error is a terminal that nothing else writes to: neither a pager at the end of a pipe nor
 *  another run beside this one.
 *
 *  @param inReadsInput  standard input is used for something other than keys */
bool TermCanDraw(bool inReadsInput);

struct TermSize {
    std::size_t mColumns, mRows;
};
TermSize TermGetSize();

/** Whether block elements are shown, and colours are wanted. */
bool TermShowsUtf8();
bool TermWantsColours();

/** @return whether it is held now: not while the program runs in the background */
bool TermHoldTerminal();

/** Erases from the cursor on and gives the terminal back as it was. Does nothing when it is not held. Signal
 *  handlers may call it. */
void TermLetGoOfTerminal();

/** The terminal is held. One write, so that nothing is seen half drawn. */
void TermDraw(std::string_view inText);

/** The terminal is held. Waits for a key for some milliseconds, or until a signal comes.
 *  @return the key's first byte, 0 when there was none, -1 when there can be no more */
int TermReadKey(int inMilliseconds);
