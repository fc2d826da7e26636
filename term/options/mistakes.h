#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "term/options/options.h"

/** What to say about a command line that makes no sense, and what may have been meant. */

/** The options that a name stands for, given whole or by its beginning: one when it is clear, none or several
 *  when it is not. */
std::vector<const TermOption*> TermFindOptions(std::string_view inName);

/** @param inTyped  with its dashes
 *  @param inMeant  what it may stand for, as TermFindOptions has it */
std::string TermUnknownOption(const std::string& inTyped, const std::vector<const TermOption*>& inMeant);

/** @param inArgument  what the letter was found in */
std::string TermUnknownLetter(const std::string& inTyped, const std::string& inArgument);

std::string TermBadValue(const TermOption& inOption, const std::string& inTyped, const std::string& inValue);
