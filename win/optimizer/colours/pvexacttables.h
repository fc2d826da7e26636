#pragma once

#include "win/optimizer/colours/pvtableplan.h"

class NvAnimation;

/** Plans tables that change no displayed colour.
 *
 *  Repeated colours, and those that no drawn pixel uses, are dropped. Where the colours of all frames fit one
 *  table, they share it, ordered; otherwise the file's global table stays, and each frame with a colour that
 *  it lacks gets a local table of just its own colours. */
PvTablePlan PvPlanExactTables(const NvAnimation& inAnimation);
