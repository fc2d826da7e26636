#pragma once

#include <cstdint>

class NvGIFFrameReader;

/** Peak memory, in bytes, of optimizing a file, but for its frames once they are packed: what these take
 * shows when they are there, see NvAnimation::GetMemory. */
std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile);
