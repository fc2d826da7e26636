#pragma once

#include <string>

#include "win/batch/mizeroutcome.h"

/** Results for spreadsheets: a line of headings, then one per file. docs/guide.md lists the columns. */

std::string TermCsvHeading();
std::string TermCsvFile(const MizerFileResult& inResult);
