#include "wnatom/controlbitmap.h"

void WnDrawBitmap(HDC inContext, const POINT& inTopLeft, const std::uint8_t* inPixels, std::uint32_t inWidth,
                  std::uint32_t inHeight) {
    if (inWidth == 0 || inHeight == 0)
        return;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = static_cast<LONG>(inWidth);
    info.bmiHeader.biHeight = static_cast<LONG>(inHeight); // positive: from the bottom up
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    SetDIBitsToDevice(inContext, inTopLeft.x, inTopLeft.y, inWidth, inHeight, 0, 0, 0, inHeight, inPixels,
                      &info, DIB_RGB_COLORS);
}
