#include "wnatom/controlbitmap.h"

WnControlBitmap::~WnControlBitmap() {
    Release();
}

void WnControlBitmap::Release() {
    if (mBitmap)
        DeleteObject(mBitmap);
    mBitmap = nullptr;
    mWidth = mHeight = 0;
}

bool WnControlBitmap::SetSize(std::int32_t inWidth, std::int32_t inHeight) {
    if (mBitmap && inWidth == mWidth && inHeight == mHeight)
        return true;
    Release();
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = inWidth;
    info.bmiHeader.biHeight = -inHeight; // the top row comes first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    mBitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (!mBitmap)
        return false;
    mPixels = static_cast<std::uint32_t*>(pixels);
    mWidth = inWidth;
    mHeight = inHeight;
    return true;
}

std::span<std::uint32_t> WnControlBitmap::Row(std::int32_t inRow) {
    const auto width = static_cast<std::size_t>(mWidth);
    return {mPixels + static_cast<std::size_t>(inRow) * width, width};
}

void WnControlBitmap::Draw(HDC inContext, const RECT& inRect) const {
    if (!mBitmap)
        return;
    const HDC memory = CreateCompatibleDC(inContext);
    const HGDIOBJ before = SelectObject(memory, mBitmap);
    const int width = inRect.right - inRect.left;
    const int height = inRect.bottom - inRect.top;
    SetStretchBltMode(inContext, width < mWidth ? HALFTONE : COLORONCOLOR);
    SetBrushOrgEx(inContext, 0, 0, nullptr); // as HALFTONE asks for
    StretchBlt(inContext, inRect.left, inRect.top, width, height, memory, 0, 0, mWidth, mHeight, SRCCOPY);
    SelectObject(memory, before);
    DeleteDC(memory);
}
