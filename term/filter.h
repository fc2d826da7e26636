#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"

/** Reads one picture from standard input and writes the smaller one, or the same bytes, to standard output.
 *  What became of it goes to standard error. */
void TermRunFilter(const TermSettings& inSettings, TermMessages& ioMessages);
