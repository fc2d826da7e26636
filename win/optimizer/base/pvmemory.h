#pragma once

#include <cstdint>

class NvGIFFrameReader;

/** Bytes that optimizing a file will need at the same time, at most: every frame, its working copies, the
 *  colours to choose the palette from and the canvases that the result is checked on. */
std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile);
