#pragma once

#include <string>

/** The page of the user guide that lists every option, in Markdown. */
std::string TermOptionList();
