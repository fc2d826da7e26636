#include "win/desktop/kappdialog.h"

#include <algorithm>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvwindows_win.h"

namespace {

/** Over the middle of the window that it belongs to, but on the screen. */
void Centre(HWND inDialog, HWND inOwner) {
    RECT dialog{};
    RECT owner{};
    MONITORINFO monitor{};
    monitor.cbSize = sizeof(monitor);
    GetWindowRect(inDialog, &dialog);
    GetWindowRect(inOwner, &owner);
    GetMonitorInfoW(MonitorFromWindow(inOwner, MONITOR_DEFAULTTONEAREST), &monitor);
    const LONG left = (owner.left + owner.right - (dialog.right - dialog.left)) / 2;
    const LONG top = (owner.top + owner.bottom - (dialog.bottom - dialog.top)) / 2;
    SetWindowPos(inDialog, nullptr, std::max(left, monitor.rcWork.left), std::max(top, monitor.rcWork.top), 0,
                 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace

KAppDialog::~KAppDialog() {
    if (mWindow)
        SetWindowLongPtrW(mWindow, DWLP_USER, 0); // the window may outlive the object as its parent's child
}

INT_PTR KAppDialog::RunModal(HWND inOwner, int inResource) {
    const INT_PTR result = DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(inResource), inOwner,
                                           &KAppDialog::Procedure, reinterpret_cast<LPARAM>(this));
    mWindow = nullptr;
    return result;
}

void KAppDialog::CreateIn(HWND inParent, int inResource) {
    if (!CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(inResource), inParent,
                            &KAppDialog::Procedure, reinterpret_cast<LPARAM>(this)))
        ThrowRuntimeError(NvLastErrno());
}

void KAppDialog::OnClick(int inControl) {
    if (inControl == IDOK || inControl == IDCANCEL)
        EndDialog(mWindow, inControl);
}

INT_PTR CALLBACK KAppDialog::Procedure(HWND inWindow, UINT inMessage, WPARAM inWParam, LPARAM inLParam) {
    if (inMessage == WM_INITDIALOG) {
        SetWindowLongPtrW(inWindow, DWLP_USER, inLParam);
        auto* const dialog = reinterpret_cast<KAppDialog*>(inLParam);
        dialog->mWindow = inWindow;
        if (const HWND owner = ::GetWindow(inWindow, GW_OWNER))
            Centre(inWindow, owner);
        dialog->OnInit();
        return TRUE;
    }
    if (inMessage == WM_DPICHANGED_BEFOREPARENT || inMessage == WM_DPICHANGED_AFTERPARENT)
        return TRUE; // a child is laid out by its parent
    auto* const dialog = reinterpret_cast<KAppDialog*>(GetWindowLongPtrW(inWindow, DWLP_USER));
    if (!dialog || inMessage != WM_COMMAND || HIWORD(inWParam) != BN_CLICKED)
        return FALSE;
    dialog->OnClick(LOWORD(inWParam));
    return TRUE;
}
