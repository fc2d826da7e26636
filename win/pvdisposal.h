#pragma once

class NvAnimation;

/** Leaves frames in place that are to be cleared although the next frame draws over all that would go.
 *
 *  What is displayed stays the same, and the next frame need not draw again what it repeats. The last frame
 *  keeps its disposal: what follows it is up to the viewer. */
void LeaveFramesDrawnOver(NvAnimation& ioAnimation);
