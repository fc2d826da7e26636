#pragma once

#include <cstdint>
#include <span>
#include <string_view>

class WnPref;

/** The switches of the preferences as plain values, so that the work on a file begins and ends with the same
 *  ones whatever happens in the Preferences dialog meanwhile. */
struct MizerSettings {
    bool mBackup;
    bool mOverwriteBackups;
    bool mAllowCrop;
    bool mIsLossless;
    bool mLog;
    bool mLogAll; ///< false: only files that were made smaller

    /** Every switch at its default. */
    MizerSettings();

    /** What is stored, each with its default when it is not. */
    static MizerSettings Read(const WnPref& inPrefs);

    void Write(WnPref& ioPrefs) const;

    /** Settings that mean nothing while another is off; they keep their values. */
    bool CanOverwriteBackups() const { return mBackup; }
    bool CanChooseMessages() const { return mLog; }
};

/** A number that the preferences store keeps between runs. */
struct MizerPreference {
    const char* mName;
    const char* mMeaning;
    std::uint32_t mDefault; ///< when nothing is stored
    std::uint32_t mLargest; ///< 1 for a switch
    bool MizerSettings::*mSwitch = nullptr;

    /** The stored number, or the default. */
    std::uint32_t Read(const WnPref& inPrefs) const;
};

/** All of them, the switches first. */
std::span<const MizerPreference> MizerGetPreferences();

/** @return null when there is none of that name */
const MizerPreference* MizerFindPreference(std::string_view inName);

/** This program's store. */
WnPref MizerOpenPreferences();
