#pragma once

#include <cstdint>

class NvGIFFrameReader;

/** Peak memory, in bytes, of optimizing a file: every frame, its working copies, the colours to choose the
 *  palette from and the canvases that the result is checked on. */
std::uint64_t PvEstimateMemory(const NvGIFFrameReader& inFile);
