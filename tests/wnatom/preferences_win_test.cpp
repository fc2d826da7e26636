// The preferences store on the registry: lookup order, writes to both roots, foreign values.

#include <windows.h>

#include "tests/support/test.h"
#include "wnatom/wnpref.h"

namespace {

constexpr const char* km_Key = "Software\\Norvek\\Parvigif\\1.x";

class Preferences : public testing::Test {
protected:
    static void Set(HKEY inRoot, const char* inName, DWORD inType, const void* inData, DWORD inSize) {
        EXPECT_EQ(RegSetKeyValueA(inRoot, km_Key, inName, inType, inData, inSize), ERROR_SUCCESS);
    }
    static void Set(HKEY inRoot, const char* inName, DWORD inValue) {
        Set(inRoot, inName, REG_DWORD, &inValue, sizeof(inValue));
    }
    /** What a root holds by itself; 99 when that is no number. */
    static DWORD Get(HKEY inRoot, const char* inName) {
        DWORD value = 99;
        DWORD size = sizeof(value);
        RegGetValueA(inRoot, km_Key, inName, RRF_RT_REG_DWORD, nullptr, &value, &size);
        return value;
    }
    std::uint32_t Read(const char* inName) const {
        std::uint32_t value = 0;
        mPrefs.ReadDWordDefault(inName, value, 9);
        return value;
    }

    TestFolder mFolder;
    TestEnvironment mEnvironment{mFolder};
    WnPref mPrefs{"Parvigif", "1.x"};
};

TEST_F(Preferences, WritesAndAdditionsGoToBothRoots) {
    EXPECT_EQ(Read("OBACK"), 9u) << "the default";
    EXPECT_TRUE(mPrefs.WriteDWord("OBACK", 4294967295u));
    EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, "OBACK"), 4294967295u);
    EXPECT_EQ(Get(HKEY_CURRENT_USER, "OBACK"), 4294967295u);

    Set(HKEY_CURRENT_USER, "BYTESSAVED", 4294967290u);
    EXPECT_TRUE(mPrefs.AddToDWords(std::array{WnPrefNumber{"BYTESSAVED", 10}}));
    EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, "BYTESSAVED"), 4u) << "goes on from the user's total";
    EXPECT_EQ(Get(HKEY_CURRENT_USER, "BYTESSAVED"), 4u);
}

TEST_F(Preferences, WithoutRightsToTheMachineWideKeyTheUsersServes) {
    // A key that goes with the session takes none that stays.
    HKEY refusing = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Refusing", 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                              nullptr, &refusing, nullptr),
              ERROR_SUCCESS);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, refusing);
    EXPECT_TRUE(mPrefs.WriteDWord("OBACK", 3));
    EXPECT_TRUE(mPrefs.AddToDWords(std::array{WnPrefNumber{"OBACK", 2}}));
    EXPECT_EQ(Read("OBACK"), 5u);
    EXPECT_EQ(Get(HKEY_CURRENT_USER, "OBACK"), 5u);
    EXPECT_EQ(Get(HKEY_LOCAL_MACHINE, "OBACK"), 99u);
    RegCloseKey(refusing);
}

TEST_F(Preferences, WhatIsNoNumberIsNotRead) {
    Set(HKEY_LOCAL_MACHINE, "LOG", REG_SZ, "7", 2);
    Set(HKEY_LOCAL_MACHINE, "LOGALL", REG_DWORD, "\1\0", 2);
    Set(HKEY_LOCAL_MACHINE, "BACKUP", 0);
    for (const char* name : {"LOGALL", "BACKUP"})
        Set(HKEY_CURRENT_USER, name, 3);
    EXPECT_EQ(Read("BACKUP"), 0u) << "the machine-wide value comes first";
    EXPECT_EQ(Read("LOG"), 9u);
    EXPECT_EQ(Read("LOGALL"), 3u);
}

} // namespace
