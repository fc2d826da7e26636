#pragma once

#include "term/messages.h"
#include "term/options.h"

/** Makes the named files smaller and prints what became of them. */
void TermRunBatch(const TermSettings& inSettings, TermMessages& ioMessages);
