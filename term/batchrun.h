#pragma once

#include "term/inputs/names.h"
#include "term/options/options.h"
#include "term/outcomes.h"
#include "term/text/messages.h"

/** Makes files smaller whose names are already resolved.
 *  @param ioInputs  its queue is taken */
void TermProcessInputs(TermInputs& ioInputs, const TermSettings& inSettings, TermMessages& ioMessages,
                       TermOutcomes& ioOutcomes);
