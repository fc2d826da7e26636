#pragma once

#include <string>

#include "term/inputs/names.h"
#include "win/batch/mizerdelivery.h"

/** Plans where in the output folder each file goes.
 *  @return what speaks against it, in words; nothing may be done then. Empty when all is well */
std::string TermPlanOutput(const std::string& inFolder, const TermInputs& inInputs, bool inIsRecursive,
                           MizerOutputFolder& ioOutput);
