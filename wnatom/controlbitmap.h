#pragma once

#include <cstdint>
#include <span>

#include <windows.h>

/** What controls of our own draw themselves with. Windows only. */

/** A picture of 32 bits per pixel that can be drawn at any size. */
class WnControlBitmap {
public:
    WnControlBitmap() = default;
    ~WnControlBitmap();
    WnControlBitmap(const WnControlBitmap&) = delete;
    WnControlBitmap& operator=(const WnControlBitmap&) = delete;

    /** Makes room for a picture; what was there is lost. @return false when there is no memory for it */
    bool SetSize(std::int32_t inWidth, std::int32_t inHeight);

    /** One row, from the top; a pixel is blue in bits 0 to 7, green 8 to 15, red 16 to 23. GDI must not be
     *  drawing: precondition, and the caller's part. */
    std::span<std::uint32_t> Row(std::int32_t inRow);

    std::int32_t GetWidth() const { return mWidth; }
    std::int32_t GetHeight() const { return mHeight; }

    /** Draws the whole picture into a rectangle: smooth when it shrinks, sharp when it grows. */
    void Draw(HDC inContext, const RECT& inRect) const;

private:
    void Release();

    HBITMAP mBitmap = nullptr;
    std::uint32_t* mPixels = nullptr; // of the bitmap, top row first
    std::int32_t mWidth = 0;
    std::int32_t mHeight = 0;
};

/** The colour (see WnControlBitmap::Row) that shows through a transparent pixel: squares of inSquare pixels
 *  in two light greys. */
constexpr std::uint32_t WnCheckerboard(std::int32_t inX, std::int32_t inY, std::int32_t inSquare) {
    return (inX / inSquare + inY / inSquare) % 2 == 0 ? 0xFFFFFF : 0xDDDDDD;
}
