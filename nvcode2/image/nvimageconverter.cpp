#include "nvcode2/image/nvimageconverter.h"

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/image/nvbitmapimage.h"
#include "nvcode2/image/nvmakeinvcolormap.h"

NvIndexedImage NvImageConverter::ToIndexed(const NvRealImage& inImage, const NvColorTable& inTable) const {
    const auto inverseMap = NvMakeArray<std::uint8_t>(km_InverseColorMapSize);
    MakeInverseColorMap(&inTable, inverseMap.get());

    NvIndexedImage image;
    switch (inImage.GetImageType()) {
    case NvImage::km_RGBImage:
        return static_cast<const NvRGBImage&>(inImage).ToIndexed(inTable, inverseMap.get(), mIndicator);
    case NvImage::km_BitmapImage:
        image = static_cast<const NvBitmapImage&>(inImage).ToIndexed({0, 0, 0}, {255, 255, 255});
        break;
    case NvImage::km_IndexedImage:
        image.CopyFrom(inImage);
        break;
    default:
        NvThrow(NvErrorCode::km_NotSupported);
    }
    if (!(image.GetColorTable() == inTable))
        image.MapToTable(&inTable, inverseMap.get());
    return image;
}

NvIndexedImage NvBitmapImage::ToIndexed(NvColor inNotSet, NvColor inSet) const {
    NvColorTable table(2);
    table.SetColor(0, inNotSet);
    table.SetColor(1, inSet);
    NvIndexedImage image(mWidth, mHeight, table);
    const NvConstPixelLock bits(*this);
    const NvPixelLock pixels(image);
    for (std::uint32_t y = 0; y < mHeight; ++y) {
        const std::uint8_t* const bitRow = bits.Row(y);
        std::uint8_t* const row = pixels.Row(y);
        for (std::uint32_t x = 0; x < mWidth; ++x)
            row[x] = static_cast<std::uint8_t>(GetBit(bitRow, GetRowBytes(), x, 0) ^ mPolarity);
    }
    return image;
}
