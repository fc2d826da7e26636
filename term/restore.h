#pragma once

#include "term/messages.h"
#include "term/options.h"

/** Puts the backups of the named pictures back in their places, those of all pictures of a folder or a
 *  pattern that have one. */
void TermRestore(const TermSettings& inSettings, TermMessages& ioMessages);
