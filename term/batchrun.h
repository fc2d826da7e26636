#pragma once

#include "term/inputs/names.h"
#include "term/options/options.h"
#include "term/outcomes.h"
#include "term/text/messages.h"

/** Makes the named files smaller and prints what became of them. */
void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages);

/** The same for files that are found already. Each is called by its place when the program is a filter. */
void TermProcessInputs(const TermInputs& inInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                       TermOutcomes& ioOutcomes);
