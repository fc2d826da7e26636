#pragma once

#include "win/optimizer/colours/pvtableplan.h"

class NvAnimation;

/** Plans tables that change no displayed colour.
 *
 *  Repeated colours, and those that no drawn pixel uses, are dropped. Where the colours of all frames fit one
 *  table, they share it, ordered. Otherwise the shared table is the file's own, or one gathered from the
 * frames whose own tables would be dearest for each colour, whichever saves more; each frame with a colour
 * that it lacks, or with codes that it would widen for more than a table, gets a local table of just its own
 * colours. */
PvTablePlan PvPlanExactTables(const NvAnimation& inAnimation);
