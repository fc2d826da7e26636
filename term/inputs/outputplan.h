#pragma once

#include <string>

#include "term/inputs/names.h"
#include "win/batch/mizerdelivery.h"

/** Plans where in the output folder each file goes.
 *  @return why that cannot be done, and nothing may be done then; empty when it can */
std::string TermPlanOutput(const std::string& inFolder, const TermInputs& inInputs, bool inIsRecursive,
                           MizerOutputFolder& ioOutput);
