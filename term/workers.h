#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "term/options/options.h"
#include "win/batch/mizeroptions.h"

/** How many files a run works on at once. */
std::size_t TermCountWorkers(const TermSettings& inSettings, std::size_t inFiles);

/** The arguments with which this program becomes one of so many workers of a run. */
std::vector<std::string> TermMakeWorkerArguments(const TermSettings& inSettings, std::size_t inWorkers);

/** Does the work of such a process, if these are such arguments. @return whether they are */
bool TermRunWorker(const std::vector<std::string>& inArguments);
