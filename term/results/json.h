#pragma once

#include <string>
#include <string_view>

#include "term/results/counts.h"
#include "win/batch/mizeroutcome.h"

/** Results for programs: one JSON object per line. docs/guide.md tells the fields. */

std::string TermJsonFile(const MizerFileResult& inResult);
std::string TermJsonSummary(const TermCounts& inCounts);

/** A string in quotes. Bytes that are no UTF-8 become U+FFFD. */
std::string TermJsonString(std::string_view inText);
