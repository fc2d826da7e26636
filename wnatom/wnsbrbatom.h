#pragma once

#include <windows.h>

/** A rectangle of a window that is drawn off-screen and shown when it is complete, so that nothing flickers.
 *  When memory is short it is drawn straight to the window. Windows only. */
class WnSBRBAtom {
public:
    /** From now on draw to GetContext(), in the coordinates of the window.
     *  @param inContext  of the window; borrowed for the object's life */
    WnSBRBAtom(HDC inContext, const RECT& inRect);

    /** Shows what was drawn. */
    ~WnSBRBAtom();
    WnSBRBAtom(const WnSBRBAtom&) = delete;
    WnSBRBAtom& operator=(const WnSBRBAtom&) = delete;

    HDC GetContext() const { return mMemory ? mMemory : mContext; }

private:
    HDC mContext;
    RECT mRect;
    HDC mMemory = nullptr;
    HBITMAP mBits = nullptr;
    HGDIOBJ mBefore = nullptr;
};
