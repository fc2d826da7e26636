#pragma once

#include <cstdio>

/** Whether a person sees what is written there, or types what is read. */
bool TermIsTerminal(std::FILE* inStream);

/** From now on standard input and output carry bytes, not lines of text. */
void TermCarryBytes();
