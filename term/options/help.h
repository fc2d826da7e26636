#pragma once

#include <string>

/** The texts of -h, --help and --version, each ending in a line break. */
std::string TermBriefHelp();
std::string TermFullHelp();
std::string TermVersion();
