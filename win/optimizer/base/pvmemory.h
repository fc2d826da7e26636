#pragma once

#include <cstdint>

class NvGIFFrameReader;

/** Bytes that the work on one file may need when nobody set another limit: half the physical memory, at least
 *  1 GiB. */
std::uint64_t PvUsualMemoryLimit();

/** Bytes that optimizing a file will need at the same time, at most: every frame, its working copies, the
 *  colours to choose the palette from and the canvases that the result is checked on. */
std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile);
