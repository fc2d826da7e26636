#pragma once

class NvAnimation;
class PvProgress;

/** Reduces an animation's colour tables without changing any displayed colour.
 *
 *  Colours that no drawn pixel uses, and repeated ones, are dropped. When all frames' colours fit one table
 * they share it; otherwise the file's global table stays, and each frame with colours of its own keeps a
 * local table of just those. Masks stay as they are; transparency fields are brought up to date.
 *
 *  @return  whether every frame now uses the shared table
 *  @throws NvErrorCode  3 when the progress was told to stop */
bool ShareExactColours(NvAnimation& ioAnimation, PvProgress& ioProgress);
