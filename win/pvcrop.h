#pragma once

class NvAnimation;

/** Cuts every frame down to the smallest rectangle that shows the same.
 *
 *  That is the rectangle of its drawn pixels; for a frame of disposal 2, which also erases its rectangle,
 * every pixel that earlier frames left covered there has to stay inside. A frame with nothing to show becomes
 * one undrawn pixel and keeps its delay. Transparency fields are brought up to date.
 *
 *  Whether a single image may be cropped is the caller's decision. */
void CropFrames(NvAnimation& ioAnimation);
