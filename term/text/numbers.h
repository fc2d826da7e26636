#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** A number with a comma before every three digits: "1,234,567". */
std::string TermGrouped(std::uint64_t inNumber);

/** The same for all numbers in a text. */
std::string TermGroupedText(std::string_view inText);
