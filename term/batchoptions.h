#pragma once

#include "term/options/options.h"
#include "win/batch/mizerdelivery.h"
#include "win/batch/mizeroptions.h"

class WnPref;

/** How the batch is to treat files, but for where its results go. */
MizerOptions TermMakeBatchOptions(const TermSettings& inSettings);

/** The folder for results, with nothing planned yet. */
MizerOutputFolder TermMakeOutputFolder(const TermSettings& inSettings);

/** A trial and a filter leave no trace of their own. */
void TermLeaveNoTrace(WnPref& ioPrefs);
