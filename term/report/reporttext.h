#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "term/results/counts.h"
#include "win/batch/mizeroutcome.h"

/** The changing parts of a report's page, in HTML. */

/** Text that a page shows as it is, and that can neither end an attribute nor begin an element. Control
 *  characters and bytes that are no UTF-8 become escapes such as \x1b. */
std::string TermHtmlText(std::string_view inText);

/** The start of the page up to where the totals go, and what stands between them and the table's rows, and
 *  the page's end. */
struct TermReportFrame {
    std::string mHead;
    std::string mMiddle;
    std::string mEnd;
};
TermReportFrame TermMakeReportFrame();

/** @param inLeftOut  number of files whose pictures are not in the page */
std::string TermReportTotals(const TermCounts& inCounts, std::uint64_t inLeftOut, std::uint64_t inLimit);

/** A file's rows in the table up to the pictures. */
std::string TermReportRow(const MizerFileResult& inResult);

/** What precedes and follows the pictures of a file. */
struct TermPicturesFrame {
    std::string mHead;
    std::string mEnd;
};
TermPicturesFrame TermMakePicturesFrame();
