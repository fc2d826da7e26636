#pragma once

#include "nvcode2/base/nvprogressindicator.h"
#include "nvcode2/image/nvcolortable.h"
#include "nvcode2/image/nvindexedimage.h"
#include "nvcode2/image/nvrgbimage.h"

/** Converts the RGB and the mask image to indexed ones, and those to another palette. A mask's set pixels are
 *  white, the others black. The result has no format information. */
class NvImageConverter {
public:
    /** inIndicator, borrowed for the converter's life, is informed of every row and may stop a conversion
     * with code 3; may be null. */
    explicit NvImageConverter(NvProgressIndicator* inIndicator = nullptr) : mIndicator(inIndicator) {}

    /** The nearest colours of a palette of at least one entry, as its inverse map finds them. An indexed
     *  image that has this very palette keeps its indices. */
    NvIndexedImage ToIndexed(const NvRealImage& inImage, const NvColorTable& inTable) const;

private:
    NvProgressIndicator* mIndicator;
};
