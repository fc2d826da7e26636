#pragma once

#include <string_view>

/** Whether a name is one that a pattern stands for: `*` stands for any run of characters, `?` for one, and A
 * to Z match in either case. */
bool MizerMatchesPattern(std::string_view inName, std::string_view inPattern);
