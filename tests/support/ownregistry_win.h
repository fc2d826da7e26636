#pragma once

#include <string>

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"

/** For a program that runs beside the test: its data folder, and preferences that nobody wrote before. Puts
 *  the user's folder back at the end. */
class OwnRegistry {
public:
    /** @param inState  stands for the folder of application data; exists */
    explicit OwnRegistry(const std::string& inState) {
        DWORD size = sizeof(mBefore);
        RegGetValueW(HKEY_CURRENT_USER, km_ShellFolders, L"AppData",
                     RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr, mBefore, &size);
        SetAppData(NvWiden(inState).c_str());
    }
    ~OwnRegistry() { SetAppData(mBefore); }
    OwnRegistry(const OwnRegistry&) = delete;
    OwnRegistry& operator=(const OwnRegistry&) = delete;

    static void ForgetPreferences() {
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER})
            RegDeleteTreeW(root, L"Software\\Norvek");
    }

    /** A number of the user's preferences; 0 when it is missing. */
    static DWORD GetPreference(const char* inName) {
        DWORD value = 0;
        DWORD size = sizeof(value);
        RegGetValueA(HKEY_CURRENT_USER, km_Key, inName, RRF_RT_REG_DWORD, nullptr, &value, &size);
        return value;
    }

    static void SetPreference(const char* inName, DWORD inValue) {
        RegSetKeyValueA(HKEY_CURRENT_USER, km_Key, inName, REG_DWORD, &inValue, sizeof(inValue));
    }

private:
    static constexpr const char* km_Key = "Software\\Norvek\\Parvigif\\1.x";
    static constexpr const wchar_t* km_ShellFolders =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

    static void SetAppData(const wchar_t* inPath) {
        RegSetKeyValueW(HKEY_CURRENT_USER, km_ShellFolders, L"AppData", REG_EXPAND_SZ, inPath,
                        static_cast<DWORD>((wcslen(inPath) + 1) * sizeof(wchar_t)));
    }

    wchar_t mBefore[MAX_PATH] = L"";
};
