#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"

/** Draws the named files on a contact sheet, a new file, and prints where each of them is. Files that cannot
 *  be read are told and left out; without any there is no sheet. */
void TermDrawContactSheet(const TermSettings& inSettings, TermMessages& ioMessages);
