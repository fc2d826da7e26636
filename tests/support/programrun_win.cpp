#include "tests/support/programrun.h"

#include <filesystem>

#include <windows.h>

#include "nvcode2/nvwindows_win.h"

namespace {

constexpr const wchar_t* kProductKey = L"Software\\Norvek";
constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

/** The command line that the other side takes apart into these arguments: one quoted, with every quote and
 * the backslashes before it or the end doubled by backslashes. */
std::wstring MakeCommandLine(const std::vector<std::string>& inArguments) {
    std::string line = "parvigif";
    for (const std::string& argument : inArguments) {
        line += " \"";
        std::size_t backslashes = 0;
        for (const char character : argument) {
            if (character == '"')
                line.append(backslashes + 1, '\\');
            backslashes = character == '\\' ? backslashes + 1 : 0;
            line += character;
        }
        line.append(backslashes, '\\');
        line += '"';
    }
    return NvWiden(line);
}

HANDLE CreateForChild(const std::string& inPath) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(NvWiden(inPath).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/** The program's data folder for as long as it runs; preferences of an earlier run are gone. */
class OwnRegistry {
public:
    explicit OwnRegistry(const std::string& inState) {
        DWORD size = sizeof(mBefore);
        RegGetValueW(HKEY_CURRENT_USER, kShellFolders, L"AppData",
                     RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr, mBefore, &size);
        SetAppData(NvWiden(inState).c_str());
    }
    ~OwnRegistry() { SetAppData(mBefore); }
    OwnRegistry(const OwnRegistry&) = delete;
    OwnRegistry& operator=(const OwnRegistry&) = delete;

private:
    static void SetAppData(const wchar_t* inPath) {
        RegSetKeyValueW(HKEY_CURRENT_USER, kShellFolders, L"AppData", REG_EXPAND_SZ, inPath,
                        static_cast<DWORD>((wcslen(inPath) + 1) * sizeof(wchar_t)));
    }

    wchar_t mBefore[MAX_PATH] = L"";
};

} // namespace

ProgramRunner::ProgramRunner(std::string inFolder) : mFolder(std::move(inFolder)) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProductKey);
    RegDeleteTreeW(HKEY_CURRENT_USER, kProductKey);
}

ProgramResult ProgramRunner::Run(const std::vector<std::string>& inArguments) {
    std::filesystem::create_directories(mOwnFolder / "tmp");
    std::filesystem::create_directories(mOwnFolder / "state");
    const TestVariable temporary("TMP", mOwnFolder / "tmp");
    const OwnRegistry registry(mOwnFolder / "state");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = CreateForChild(mOwnFolder / "stdout");
    startup.hStdError = CreateForChild(mOwnFolder / "stderr");
    PROCESS_INFORMATION process{};
    std::wstring line = MakeCommandLine(inArguments);
    ProgramResult result;
    DWORD status = 99;
    if (CreateProcessW(NvWiden(PARVIGIF_PROGRAM).c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       NvWiden(mFolder).c_str(), &startup, &process)) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    result.mStatus = static_cast<int>(status);
    result.mOut = ReadTestFile(mOwnFolder / "stdout");
    result.mErr = ReadTestFile(mOwnFolder / "stderr");
    return result;
}
