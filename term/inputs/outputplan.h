#pragma once

#include <string>

#include "term/inputs/names.h"
#include "win/batch/mizerdelivery.h"

/** Plans where each file goes: to the output folder, or for a single one to the file that is named instead.
 *  @param inOutput  what --output was given
 *  @return why that cannot be done, and nothing may be done then; empty when it can
 *  @throws NvErrorCode  why nobody can look there */
std::string TermPlanOutput(const std::string& inOutput, const TermInputs& inInputs, bool inIsRecursive,
                           MizerOutputFolder& ioOutput);
