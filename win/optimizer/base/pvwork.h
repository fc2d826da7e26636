#pragma once

#include <cstdint>

class NvGIFFrame;
class NvGIFFrameReader;

/** The work that steps are, in nanoseconds of the machine of docs/trust.md. It is counted, never timed, so
 * that a file meets the same fate on every machine. The rates are those of the slowest pictures found. */

/** Raised when a file has used up the work that it may cost. */
struct PvTooMuchWork {};

inline constexpr std::uint64_t km_WorkPerSecond = 1000000000;
inline constexpr std::uint32_t km_UsualSecondsOfWork = 600;

/** Of trying to exchange pixels. */
inline constexpr std::uint64_t km_WorkPerSwapStep = 2;

/** Reading all frames once, from the file to a screen. */
std::uint64_t PvWorkOfReading(const NvGIFFrameReader& inFile);

/** Looking at each pixel of a frame as one step does. */
std::uint64_t PvWorkOnFrame(const NvGIFFrame& inFrame);
