#pragma once

#include <initializer_list>
#include <string>

#include "pvtextnumbers.h" // PvText: a name for each number in texts.txt

class NvStringResources;

/** What the program says, by number. The texts stand in texts.txt and nowhere else: on Windows they are the
 * string resources of each program, elsewhere a table inside it. */

/** A text, with one of inParts in the place of each "{}" in turn.
 *  @throws NvErrorCode  2; 35 when the program's resources lack the text */
std::string PvSay(PvText inText, std::initializer_list<std::string> inParts = {});

/** Where the program's texts are; null when its own file cannot be reached. */
const NvStringResources* PvGetTexts();
