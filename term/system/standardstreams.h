#pragma once

#include <cstdio>

/** Makes standard output and error take the program's texts as they are: UTF-8, lines ending as printed.
 *  Called once, before anything is printed. */
void TermPrepareStreams();

/** Whether a person sees what is written there, or types what is read. */
bool TermIsTerminal(std::FILE* inStream);

/** From now on standard input and output carry bytes, not lines of text. */
void TermCarryBytes();
