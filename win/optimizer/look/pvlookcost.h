#pragma once

class NvGIFFrame;
class NvIndexedImage;

/** What a result costs the person who gets it; lower is better.
 *
 *  A percent of similarity may cost four percent of size, about what lossy GIF tools trade them for on real
 *  files. Below a few KiB size hardly counts: a small file fills a disk block and a packet anyway, and a
 *  small picture is looked at closely. A level of banding over the whole picture may cost a third of size.
 *
 *  @param inBytes       how large the file is, or the frame stands for
 *  @param inSimilarity  structural similarity to the original, 1.0 for the same picture
 *  @param inBanding     see PvBanding */
double PvLookCost(double inBytes, double inSimilarity, double inBanding = 0.0);

/** The size in bytes at which a result of some similarity has this cost; 0 if none has. */
double PvSizeAtLookCost(double inCost, double inSimilarity);

/** Structural similarity of a frame to itself with other pixels, of the same size; undrawn ones as mid grey.
 */
double PvFrameSimilarity(const NvGIFFrame& inFrame, const NvIndexedImage& inOther);
