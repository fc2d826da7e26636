#pragma once

#include <cstdint>

class NvIndexedImage;

/** Makes a dithered image cheaper to compress: exchanges every pair of neighbouring pixels that qualifies
 *  (see nvpixelpairs.h), in place, in one pass from top to bottom. The first and last rows and columns are
 *  never changed; images narrower than 5 or lower than 3 pixels not at all. An exchange is seen by the tests
 *  of the rows below it.
 *
 *  @param ioImage  not null, not locked, with every index in its table
 *  @return         how many pairs were exchanged */
std::uint32_t PostDither(NvIndexedImage* ioImage);

/** The same for an image with transparency: a pair with the transparent index is left alone. */
std::uint32_t PostDitherTransparent(NvIndexedImage* ioImage, std::uint8_t inTransparentIndex);
