#pragma once

#include <cstdint>

#include <windows.h>

/** What controls of our own draw themselves with. Windows only. */

/** Copies a picture to a place of a window. Its pixels have three bytes, blue first; the bottom row comes
 * first, and each is padded to a multiple of 4 bytes. Does nothing for one without pixels. */
void WnDrawBitmap(HDC inContext, const POINT& inTopLeft, const std::uint8_t* inPixels, std::uint32_t inWidth,
                  std::uint32_t inHeight);
