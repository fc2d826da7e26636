#pragma once

#include <windows.h>

/** A dialog from the resources: keeps the object and its window together. */
class KAppDialog {
public:
    KAppDialog() = default;
    virtual ~KAppDialog();
    KAppDialog(const KAppDialog&) = delete;
    KAppDialog& operator=(const KAppDialog&) = delete;

    /** Shows it and returns when it is closed. @return IDOK or IDCANCEL; 0 when it could not be made */
    INT_PTR RunModal(HWND inOwner, int inResource);

    /** Makes it a child of a window.
     *  @throws NvErrorCode  by the system's error */
    void CreateIn(HWND inParent, int inResource);

    HWND GetWindow() const { return mWindow; }

protected:
    /** Called when the window and its controls exist. */
    virtual void OnInit() {}

    /** Called when a button was clicked. By default OK and Cancel close a modal dialog. */
    virtual void OnClick(int inControl);

    HWND GetControl(int inControl) const { return GetDlgItem(mWindow, inControl); }

private:
    static INT_PTR CALLBACK Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam);

    HWND mWindow = nullptr;
};
