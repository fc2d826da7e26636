#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/** How many bytes the well-formed UTF-8 character at the start of a text has: 1 to 4; 0 when there is none
 *  (also: overlong forms, surrogates, what lies above U+10FFFF). The text is not empty. */
std::size_t TermUtf8Length(std::string_view inText);

bool TermIsUtf8(std::string_view inText);

/** The usual alphabet, padded with '='. */
std::string TermBase64(std::string_view inBytes);
