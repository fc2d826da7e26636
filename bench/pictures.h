#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nvcode2/image/nvindexedimage.h"

/** What GIF frames are made of, drawn by rule, the same in every run. */
enum class PictureKind : std::uint8_t {
    km_Screen,    ///< 16 flat colours: panels, lines of text
    km_Photo,     ///< 256 colours, smooth with a little grain
    km_Dithered,  ///< 16 greys in an ordered dither
    km_Noise,     ///< 256 colours at random
    km_Difference ///< what is left of a screen when little moves: one index nearly everywhere
};

inline constexpr PictureKind km_AllPictures[] = {PictureKind::km_Screen, PictureKind::km_Photo,
                                                 PictureKind::km_Dithered, PictureKind::km_Noise,
                                                 PictureKind::km_Difference};

const char* PictureName(PictureKind inKind);

NvIndexedImage DrawPicture(PictureKind inKind, std::uint32_t inWidth, std::uint32_t inHeight);

/** The GIF files of the folder that the environment variable PARVIGIF_BENCH_GIFS names; none without it. */
std::vector<std::string> GIFsToMeasure();
