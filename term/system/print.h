#pragma once

#include <string>

#include "term/text/messages.h"

/** Writes text to standard output at once. When its reader has gone away the program ends quietly. */
void TermPrint(const std::string& inText, TermMessages& ioMessages);
