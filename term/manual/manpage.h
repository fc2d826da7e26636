#pragma once

#include <string>

/** The man page parvigif(1), in the language of man(7). */
std::string TermManPage();
