#pragma once

#include <cstdint>
#include <memory>

#include "nvcode2/gif/nvanimation.h"

class PvProgress;

/** Loads a whole GIF file.
 *
 *  @param inMemoryLimit  bytes the file may need
 *  @throws NvErrorCode   2 when the file would need more memory than that, before its pixels are read; 3 when
 *  the host wants to stop; otherwise those of NvGIFFrameReader */
std::unique_ptr<NvAnimation> LoadAnimation(const char* inPath, std::uint64_t inMemoryLimit,
                                           PvProgress& ioProgress);
