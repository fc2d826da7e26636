#pragma once

#include "nvcode2/nvcolortable.h"
#include "nvcode2/nvindexedimage.h"
#include "nvcode2/nvprogressindicator.h"
#include "nvcode2/nvrgbimage.h"

/** Converts between the indexed, the mask and the RGB image. A mask's set pixels are white, the others
 *  black; format information is not converted. */
class NvImageConverter {
public:
    /** inIndicator, borrowed for the converter's life, hears of every row and may stop a conversion with
     *  code 3; may be null. */
    explicit NvImageConverter(NvProgressIndicator* inIndicator = nullptr) : mIndicator(inIndicator) {}

    /** Indices through their table. No caller yet in the program: the way out to other formats. */
    NvRGBImage ToRGB(const NvRealImage& inImage) const;
    /** The nearest colours of a palette of at least one entry, as its inverse map finds them. An indexed
     *  image that has this very palette keeps its indices. */
    NvIndexedImage ToIndexed(const NvRealImage& inImage, const NvColorTable& inTable) const;

private:
    NvProgressIndicator* mIndicator;
};
