#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"

/** What the program can be asked to do, a function each. */

/** Makes the named files smaller and prints what became of them. */
void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages);

/** Reads one picture from standard input and writes the smaller one, or the same bytes, to standard output.
 *  What became of it goes to standard error. */
void TermRunFilter(const TermSettings& inSettings, TermMessages& ioMessages);

/** Restores the named pictures from their backups; of a folder or a pattern, all pictures that have one. */
void TermRestore(const TermSettings& inSettings, TermMessages& ioMessages);

/** Draws the named files on a contact sheet, a new file, and prints where each of them is. Files that cannot
 *  be read are reported and left out; without any there is no sheet. */
void TermDrawContactSheet(const TermSettings& inSettings, TermMessages& ioMessages);

/** Stores what --set asks for. */
void TermStorePreferences(const TermSettings& inSettings, TermMessages& ioMessages);

/** Prints every preference with its value and where that comes from. */
void TermListPreferences(const TermSettings& inSettings, TermMessages& ioMessages);

/** Prints what all runs to date have saved. */
void TermPrintTotals(TermMessages& ioMessages);

/** Sets them to zero. */
void TermResetTotals(TermMessages& ioMessages);

/** Prints the results log, with control characters in names made visible. */
void TermShowLog(TermMessages& ioMessages);

/** Empties the results log. */
void TermClearLog(TermMessages& ioMessages);
