#pragma once

class NvAnimation;

/** Merges, within each frame, colours so near to each other that hardly anybody tells them apart. Makes room
 *  in the palette for colours that differ, and longer strings for LZW.
 *
 *  The most used colours lead; every other one joins the nearest leader within reach, or leads itself, and a
 *  group becomes the mean of its pixels. How far the reach is, is chosen for the whole animation: on a few
 *  frames it is tried what each saves and how it looks (see PvLookCost).
 *
 *  @return  the largest mean error that a frame suffered, in levels per channel */
double MergeSimilarFrameColours(NvAnimation& ioAnimation);
