#include "win/desktop/kapppreferences.h"

#include "win/desktop/resource.h"

bool KAppPreferences::Run(HWND inOwner) {
    return RunModal(inOwner, IDD_PREFERENCES) == IDOK;
}

void KAppPreferences::OnInit() {
    const auto check = [this](int inControl, bool inOn) {
        CheckDlgButton(GetWindow(), inControl, inOn ? BST_CHECKED : BST_UNCHECKED);
    };
    check(IDC_BACKUP, mSettings.mBackup);
    check(IDC_OVERWRITE_BACKUPS, mSettings.mOverwriteBackups);
    check(IDC_LOG, mSettings.mLog);
    check(IDC_LOG_ALL, mSettings.mLogAll);
    check(IDC_LOG_RESULTS, !mSettings.mLogAll);
    check(IDC_ALLOW_CROP, mSettings.mAllowCrop);
    check(IDC_LOSSLESS, mSettings.mIsLossless);
    EnableControls();
}

void KAppPreferences::OnClick(int inControl) {
    ReadControls();
    EnableControls();
    KAppDialog::OnClick(inControl);
}

void KAppPreferences::ReadControls() {
    const auto isChecked = [this](int inControl) {
        return IsDlgButtonChecked(GetWindow(), inControl) == BST_CHECKED;
    };
    mSettings.mBackup = isChecked(IDC_BACKUP);
    mSettings.mOverwriteBackups = isChecked(IDC_OVERWRITE_BACKUPS);
    mSettings.mLog = isChecked(IDC_LOG);
    mSettings.mLogAll = isChecked(IDC_LOG_ALL);
    mSettings.mAllowCrop = isChecked(IDC_ALLOW_CROP);
    mSettings.mIsLossless = isChecked(IDC_LOSSLESS);
}

void KAppPreferences::EnableControls() {
    EnableWindow(GetControl(IDC_OVERWRITE_BACKUPS), mSettings.CanOverwriteBackups());
    EnableWindow(GetControl(IDC_LOG_ALL), mSettings.CanChooseMessages());
    EnableWindow(GetControl(IDC_LOG_RESULTS), mSettings.CanChooseMessages());
}
