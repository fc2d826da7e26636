#pragma once

#include <cstdint>

class NvAnimation;
class PvProgress;

/** Largest difference per channel at which a pixel counts as the one already on the screen. */
inline constexpr std::uint32_t km_DifferenceTolerance = 28;

/** Makes a frame's pixels transparent where the screen already shows almost the same colour.
 *
 *  A frame's disposal becomes 1 unless it is 2. Holes of one or two pixels are filled again, since breaking a
 * run costs LZW more than they save. Every frame's transparency fields are brought up to date.
 *
 *  Precondition: no frame restores what it covered.
 *
 *  A frame that uses every entry of a full table has no index left for transparent pixels, and is drawn
 * whole.
 *
 *  @param inTolerance   0 to 255 per channel
 *  @param inTableLimit  entries that a colour table may have at most
 *  @throws NvErrorCode  3 when the progress was told to stop */
void DifferenceFrames(NvAnimation& ioAnimation, std::uint32_t inTolerance, std::uint32_t inTableLimit,
                      PvProgress& ioProgress);
