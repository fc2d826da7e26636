#pragma once

#include <string>

/** Scripts that let a shell complete the program's options, their values, and names. */
std::string TermBashCompletion();
std::string TermZshCompletion();
std::string TermFishCompletion();
