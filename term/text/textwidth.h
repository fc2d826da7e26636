#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** Columns that a terminal needs for a text: two for the wide characters of East Asia and for emoji, none for
 *  accents that combine. A byte that is no UTF-8 counts as one. */
std::size_t TermTextWidth(std::string_view inText);

/** The text when it fits, else its end behind an ellipsis: of a path, the part by which files differ. Never
 *  wider than inColumns, and never cut within a character. Bytes that are no UTF-8 become "?". */
std::string TermShortened(std::string_view inText, std::size_t inColumns, std::string_view inEllipsis);
