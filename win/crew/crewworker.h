#pragma once

#include <functional>
#include <string>

#include "win/batch/mizeroptions.h"
#include "win/optimizer/base/pvoptsettings.h"

class WnPref;

/** Works on files for the process that started this one as a WnChild, one at a time, until that has no more.
 *
 *  @param inPrefs    borrowed; the totals in it are left to the other process
 *  @param inOnJob    called with each file's path and its place below an output folder, before the work on it
 *  @throws nothing   what goes wrong with a file is reported to the other process */
void CrewWork(WnPref& ioPrefs, const PvOptSettings& inSettings, const MizerOptions& inOptions,
              const std::function<void(const std::string&, const std::string&)>& inOnJob);
