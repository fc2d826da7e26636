#include "tests/support/programrun.h"

#include <windows.h>

#include "nvcode2/base/nvwindows_win.h"
#include "tests/support/ownregistry_win.h"

namespace {

/** The command line that the other side takes apart into these arguments: one quoted, with every quote and
 *  the backslashes before it or the end doubled by backslashes. */
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

HANDLE OpenForChild(const std::string& inPath, DWORD inAccess, DWORD inHow) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    return CreateFileW(NvWidePath(inPath).c_str(), inAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                       inHow, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/** In paths, that is wherever no byte is shown as \x and its number. */
void UseSlashes(std::string& ioText) {
    for (std::size_t i = 0; i + 1 < ioText.size(); ++i)
        if (ioText[i] == '\\' && ioText[i + 1] != 'x')
            ioText[i] = '/';
}

} // namespace

ProgramRunner::ProgramRunner(std::string inFolder) : mFolder(std::move(inFolder)) {
    OwnRegistry::ForgetPreferences();
}

ProgramResult ProgramRunner::Run(const std::vector<std::string>& inArguments) {
    std::filesystem::create_directories(mOwnFolder / "tmp");
    std::filesystem::create_directories(mOwnFolder / "state");
    const TestVariable temporary("TMP", mOwnFolder / "tmp");
    const OwnRegistry registry(mOwnFolder / "state");
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput =
        mInput.empty() ? nullptr : OpenForChild(mFolder + "/" + mInput, GENERIC_READ, OPEN_EXISTING);
    startup.hStdOutput = OpenForChild(mOwnFolder / "stdout", GENERIC_WRITE, CREATE_ALWAYS);
    startup.hStdError = OpenForChild(mOwnFolder / "stderr", GENERIC_WRITE, CREATE_ALWAYS);
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
    for (const HANDLE stream : {startup.hStdInput, startup.hStdOutput, startup.hStdError})
        CloseHandle(stream);
    result.mStatus = static_cast<int>(status);
    result.mOut = ReadTestFile(mOwnFolder / "stdout");
    result.mErr = ReadTestFile(mOwnFolder / "stderr");
    if (mInput.empty())
        UseSlashes(result.mOut);
    UseSlashes(result.mErr);
    return result;
}
