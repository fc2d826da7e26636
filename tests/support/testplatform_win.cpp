#include "tests/support/testplatform.h"

#include <stdexcept>

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"
#include "tests/support/test.h"
#include "wnatom/wnfolders_win.h"

namespace {

constexpr const wchar_t* km_ShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

/** A fresh registry key that stands for one of the roots in this process. */
class TestRoot {
public:
    explicit TestRoot(HKEY inRoot) : mRoot(inRoot), mPath(L"Software\\Norvek-Tests\\" + WnGetRandomName()) {
        RegCreateKeyExW(HKEY_CURRENT_USER, mPath.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &mKey,
                        nullptr);
    }
    ~TestRoot() {
        RegDeleteTreeW(mKey, nullptr);
        RegCloseKey(mKey);
        RegDeleteKeyW(HKEY_CURRENT_USER, mPath.c_str());
    }
    TestRoot(const TestRoot&) = delete;
    TestRoot& operator=(const TestRoot&) = delete;

    void Begin() const { RegOverridePredefKey(mRoot, mKey); }
    void End() const { RegOverridePredefKey(mRoot, nullptr); }

private:
    HKEY mRoot;
    std::wstring mPath;
    HKEY mKey = nullptr;
};

} // namespace

std::string MakeTestFolder() {
    const std::wstring folder = WnGetTemporaryFolder() + L"\\parvigif-test-" + WnGetRandomName();
    if (!CreateDirectoryW(folder.c_str(), nullptr))
        throw std::runtime_error("no temporary folder for a test");
    return NvNarrow(folder);
}

void SetTestVariable(const char* inName, const char* inValue) {
    _putenv_s(inName, inValue ? inValue : "");
}

struct TestEnvironment::Settings {
    explicit Settings(const TestFolder& inFolder) : mTemporary("TMP", inFolder.GetPath()) {
        mMachine.Begin();
        mUser.Begin();
        std::filesystem::create_directory(inFolder / "state");
        const std::wstring state = NvWiden(inFolder / "state");
        RegSetKeyValueW(HKEY_CURRENT_USER, km_ShellFolders, L"AppData", REG_SZ, state.c_str(),
                        static_cast<DWORD>((state.size() + 1) * sizeof(wchar_t)));
    }
    ~Settings() {
        mMachine.End();
        mUser.End();
    }
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    TestVariable mTemporary;
    TestRoot mMachine{HKEY_LOCAL_MACHINE}, mUser{HKEY_CURRENT_USER};
};

TestEnvironment::TestEnvironment(const TestFolder& inFolder)
    : mSettings(std::make_unique<Settings>(inFolder)) {}

TestEnvironment::~TestEnvironment() = default;
