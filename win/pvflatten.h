#pragma once

class NvAnimation;
class PvProgress;

/** Rewrites an animation that uses restore-to-previous anywhere so that no frame does.
 *
 *  Each frame becomes the whole displayed canvas, drawn where it is covered, in a colour table of its own; a
 * canvas of more colours than a table holds is quantized. It stays in place when the next canvas covers
 * everything it covers, and is cleared otherwise. What is displayed stays the same, and the later steps only
 * meet disposals that they handle exactly.
 *
 *  @return  the largest mean error of a frame that had to be quantized, per channel; 0 when nothing changed
 *  @throws NvErrorCode  3 when the progress was told to stop */
double FlattenRestoredFrames(NvAnimation& ioAnimation, PvProgress& ioProgress);
