#pragma once

#include <string>
#include <vector>

#include "term/options/options.h"

/** Reads the arguments (without the program's name). Help and version win over anything that is wrong.
 *  @return whether they are valid; else outError is one line that names the bad one */
bool TermParseArguments(const std::vector<std::string>& inArguments, TermSettings& outSettings,
                        std::string& outError);
