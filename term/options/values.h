#pragma once

#include <cstdint>
#include <string>

/** The values that options take. Each takes the whole text or nothing; what cannot be read changes nothing
 * but the result's own variable. */

/** A number from inLeast to inMost, in digits alone. */
bool TermReadNumber(const std::string& inText, std::uint32_t inLeast, std::uint32_t inMost,
                    std::uint32_t& outNumber);

/** Bytes: "500", "2k", "1.5M", "1G", also "2kB" and "2KiB", which are the same: a k is 1024.
 *  @param inUnit  what a number alone counts, in bytes */
bool TermReadSize(const std::string& inText, std::uint64_t inUnit, std::uint64_t& outBytes);

/** "2%", 0 to 100. */
bool TermReadPercentage(const std::string& inText, double& outPercentage);
