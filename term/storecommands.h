#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"

/** Stores what --set asks for. */
void TermStorePreferences(const TermSettings& inSettings, TermMessages& ioMessages);

/** Prints every preference with its value and where that comes from. */
void TermListPreferences(TermMessages& ioMessages);

/** Prints how much all runs to date have done. */
void TermPrintTotals(TermMessages& ioMessages);

/** Prints the results log, with control characters in names made visible. */
void TermShowLog(const TermSettings& inSettings, TermMessages& ioMessages);

/** Empties the results log. */
void TermClearLog(const TermSettings& inSettings, TermMessages& ioMessages);
