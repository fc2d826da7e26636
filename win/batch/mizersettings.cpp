#include "win/batch/mizersettings.h"

#include "win/batch/mizerpreferences.h"
#include "wnatom/wnpref.h"

namespace {

struct Entry {
    const char* mName;
    bool MizerSettings::*mSetting;
};

constexpr Entry km_Entries[] = {
    {"LOG", &MizerSettings::mLog},
    {"BACKUP", &MizerSettings::mBackup},
    {"OBACK", &MizerSettings::mOverwriteBackups},
    {"LOGALL", &MizerSettings::mLogAll},
    {"ALLOWCROP", &MizerSettings::mAllowCrop},
    {"LOSSLESS", &MizerSettings::mIsLossless},
};

} // namespace

MizerSettings MizerSettings::Read(const WnPref& inPrefs) {
    MizerSettings settings;
    for (const Entry& entry : km_Entries) {
        std::uint32_t value = 0;
        inPrefs.ReadDWordDefault(entry.mName, value, MizerFindPreference(entry.mName)->mDefault);
        settings.*entry.mSetting = value != 0;
    }
    return settings;
}

void MizerSettings::Write(WnPref& ioPrefs) const {
    for (const Entry& entry : km_Entries)
        ioPrefs.WriteDWord(entry.mName, this->*entry.mSetting ? 1 : 0);
}
