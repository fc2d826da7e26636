#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"
#include "wnatom/wnpref.h"

/** The preferences, with what the command line says for this run. */
WnPref TermOpenPreferences(const TermSettings& inSettings);

/** The same, and what is wrong with them is reported. */
WnPref TermOpenPreferences(const TermSettings& inSettings, TermMessages& ioMessages);
