#pragma once

#include <string>

#include "win/batch/mizershell.h"

/** Why a file failed, was passed over, or stayed although a smaller one was found; empty when the status says
 *  it all. May hold any character that a reason or a name holds. */
std::string MizerOutcomeWords(const MizerFileResult& inResult);
