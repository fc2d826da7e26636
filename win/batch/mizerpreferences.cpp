#include "win/batch/mizerpreferences.h"

#include <algorithm>
#include <array>

#include "wnatom/wnpref.h"

namespace {

constexpr auto km_Preferences = std::to_array<MizerPreference>({
    {"BACKUP", "keep the original as NAME.BAK", 1, 1, &MizerSettings::mBackup},
    {"OBACK", "replace backups that exist", 0, 1, &MizerSettings::mOverwriteBackups},
    {"ALLOWCROP", "cut transparent borders off single images", 0, 1, &MizerSettings::mAllowCrop},
    {"LOSSLESS", "change no displayed colour", 0, 1, &MizerSettings::mIsLossless},
    {"LOG", "write the results log", 1, 1, &MizerSettings::mLog},
    {"LOGALL", "log unchanged files too", 1, 1, &MizerSettings::mLogAll},
    {"BYTESSAVED", "bytes saved to date", 0, UINT32_MAX},
    {"FILESPROCESSED", "files processed to date", 0, UINT32_MAX},
});

} // namespace

MizerSettings::MizerSettings() {
    for (const MizerPreference& preference : km_Preferences) {
        if (preference.mSwitch)
            this->*preference.mSwitch = preference.mDefault != 0;
    }
}

MizerSettings MizerSettings::Read(const WnPref& inPrefs) {
    MizerSettings settings;
    for (const MizerPreference& preference : km_Preferences) {
        if (preference.mSwitch)
            settings.*preference.mSwitch = preference.Read(inPrefs) != 0;
    }
    return settings;
}

void MizerSettings::Write(WnPref& ioPrefs) const {
    for (const MizerPreference& preference : km_Preferences) {
        if (preference.mSwitch)
            ioPrefs.WriteDWord(preference.mName, this->*preference.mSwitch ? 1 : 0);
    }
}

std::uint32_t MizerPreference::Read(const WnPref& inPrefs) const {
    std::uint32_t value = 0;
    inPrefs.ReadDWordDefault(mName, value, mDefault);
    return value;
}

std::span<const MizerPreference> MizerGetPreferences() {
    return km_Preferences;
}

const MizerPreference* MizerFindPreference(std::string_view inName) {
    const auto found = std::find_if(km_Preferences.begin(), km_Preferences.end(),
                                    [&](const MizerPreference& inEntry) { return inName == inEntry.mName; });
    return found == km_Preferences.end() ? nullptr : &*found;
}

WnPref MizerOpenPreferences() {
    return WnPref("Parvigif", "1.x");
}
