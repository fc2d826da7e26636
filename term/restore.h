#pragma once

#include "term/options/options.h"
#include "term/text/messages.h"

/** Puts the backups of the named pictures back in their places, those of all pictures of a folder or a
 *  pattern that have one. */
void TermRestore(const TermSettings& inSettings, TermMessages& ioMessages);
