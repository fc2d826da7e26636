#pragma once

#include <string>

/** Reads, plays and optimizes a file in a private folder and compares everything with readers that share
 *  nothing with the library: the plain one, and giflib.
 *
 *  @param inOptions  bits: 0 lossless, 1 crops single images, 2 the original is kept, 3-4 tolerance */
void CheckGIF(const std::string& inBytes, unsigned inOptions);
