#include "win/desktop/kapppreferences.h"

#include "win/desktop/resource.h"

namespace {

struct CheckBox {
    int mControl;
    bool MizerSettings::*mSetting;
};

constexpr CheckBox km_CheckBoxes[] = {
    {IDC_BACKUP, &MizerSettings::mBackup},
    {IDC_OVERWRITE_BACKUPS, &MizerSettings::mOverwriteBackups},
    {IDC_LOG, &MizerSettings::mLog},
    {IDC_LOG_ALL, &MizerSettings::mLogAll},
    {IDC_ALLOW_CROP, &MizerSettings::mAllowCrop},
    {IDC_LOSSLESS, &MizerSettings::mIsLossless},
};

} // namespace

bool KAppPreferences::Run(HWND inOwner) {
    return RunModal(inOwner, IDD_PREFERENCES) == IDOK;
}

void KAppPreferences::OnInit() {
    const auto check = [this](int inControl, bool inOn) {
        CheckDlgButton(GetWindow(), inControl, inOn ? BST_CHECKED : BST_UNCHECKED);
    };
    for (const CheckBox& box : km_CheckBoxes)
        check(box.mControl, mSettings.*box.mSetting);
    check(IDC_LOG_RESULTS, !mSettings.mLogAll); // the other of the two buttons
    EnableControls();
}

void KAppPreferences::OnClick(int inControl) {
    ReadControls();
    EnableControls();
    KAppDialog::OnClick(inControl);
}

void KAppPreferences::ReadControls() {
    for (const CheckBox& box : km_CheckBoxes)
        mSettings.*box.mSetting = IsDlgButtonChecked(GetWindow(), box.mControl) == BST_CHECKED;
}

void KAppPreferences::EnableControls() {
    EnableWindow(GetControl(IDC_OVERWRITE_BACKUPS), mSettings.CanOverwriteBackups());
    EnableWindow(GetControl(IDC_LOG_ALL), mSettings.CanChooseMessages());
    EnableWindow(GetControl(IDC_LOG_RESULTS), mSettings.CanChooseMessages());
}
