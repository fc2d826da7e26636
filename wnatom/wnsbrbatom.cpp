#include "wnatom/wnsbrbatom.h"

WnSBRBAtom::WnSBRBAtom(HDC inContext, const RECT& inRect) : mContext(inContext), mRect(inRect) {
    mBits = CreateCompatibleBitmap(inContext, inRect.right - inRect.left, inRect.bottom - inRect.top);
    if (!mBits)
        return;
    mMemory = CreateCompatibleDC(inContext);
    mBefore = SelectObject(mMemory, mBits);
    SetWindowOrgEx(mMemory, inRect.left, inRect.top, nullptr);
}

WnSBRBAtom::~WnSBRBAtom() {
    if (!mMemory)
        return;
    BitBlt(mContext, mRect.left, mRect.top, mRect.right - mRect.left, mRect.bottom - mRect.top, mMemory,
           mRect.left, mRect.top, SRCCOPY);
    SelectObject(mMemory, mBefore);
    DeleteDC(mMemory);
    DeleteObject(mBits);
}
