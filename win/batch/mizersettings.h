#pragma once

class WnPref;

/** What a person decides in the Preferences dialog. */
struct MizerSettings {
    bool mLog = true;
    bool mBackup = true;
    bool mOverwriteBackups = false;
    bool mLogAll = true; ///< false: only files that were made smaller
    bool mAllowCrop = false;
    bool mIsLossless = false;

    /** What is stored, each with its default when it is not. */
    static MizerSettings Read(const WnPref& inPrefs);

    void Write(WnPref& ioPrefs) const;

    /** Settings that mean nothing while another is off; they keep their values. */
    bool CanOverwriteBackups() const { return mBackup; }
    bool CanChooseMessages() const { return mLog; }
};
