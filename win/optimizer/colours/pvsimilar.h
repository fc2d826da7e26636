#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class NvGIFFrame;
struct PvFrameColours;

/** The frames of an animation on which merging near colours is tried: a few, spread evenly, in order. */
std::vector<std::uint32_t> PvFramesToTry(std::uint32_t inFrameCount);

/** Merges colours of every frame that are near to each other.
 *
 *  The most used colours lead; every other one joins the nearest leader within reach, or leads itself, and a
 *  group becomes the mean of its pixels. One reach is chosen for the whole animation, from what each saves on
 *  a few frames and how that looks (see PvLookCost); where soft shading would turn into bands, it is 0.
 *
 *  @param ioFrames  the colours of all frames, as they were read
 *  @param inTried   the frames that PvFramesToTry names
 *  @return          the largest mean error that a frame suffered, in levels per channel */
double MergeSimilarFrameColours(std::vector<PvFrameColours>& ioFrames,
                                const std::vector<std::unique_ptr<NvGIFFrame>>& inTried);
