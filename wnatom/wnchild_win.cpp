#include "wnatom/wnchild.h"

#include <algorithm>
#include <array>

#include <windows.h>

#include "nvcode2/base/nverrorcode.h"

namespace {

/** An open handle. */
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE inHandle) : mHandle(inHandle) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE* GetPlace() { return &mHandle; }
    HANDLE Get() const { return mHandle; }
    void Close() {
        if (mHandle)
            CloseHandle(mHandle);
        mHandle = nullptr;
    }

private:
    HANDLE mHandle = nullptr;
};

[[noreturn]] void ThrowCannotStart() {
    NvThrow(GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? NvErrorCode::km_OutOfMemory
                                                      : NvErrorCode::km_TooManyFiles);
}

struct Pipe {
    Pipe() {
        if (!CreatePipe(mRead.GetPlace(), mWrite.GetPlace(), nullptr, 0))
            ThrowCannotStart();
    }

    Handle mRead, mWrite;
};

/** As CommandLineToArgvW takes it apart: backslashes count twice only before a quote. */
std::string Quoted(const std::string& inArgument) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char character : inArgument) {
        if (character == '"')
            quoted.append(backslashes + 1, '\\');
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    return quoted.append(backslashes, '\\') + '"';
}

std::wstring Wide(const std::string& inText) {
    const int size = static_cast<int>(inText.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, inText.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, inText.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::wstring GetProgramPath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

/** All processes in it end with this one. */
HANDLE GetJob() {
    static const Handle job = [] {
        HANDLE made = CreateJobObjectW(nullptr, nullptr);
        JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
        limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
        SetInformationJobObject(made, JobObjectExtendedLimitInformation, &limits, sizeof limits);
        return Handle(made);
    }();
    return job.Get();
}

bool WriteAll(HANDLE inHandle, const std::string& inBytes) {
    for (std::size_t at = 0; at < inBytes.size();) {
        DWORD written = 0;
        if (!WriteFile(inHandle, inBytes.data() + at, static_cast<DWORD>(inBytes.size() - at), &written,
                       nullptr))
            return false;
        at += written;
    }
    return true;
}

/** Waits for bytes. @return none at the end, or when they cannot be read */
std::string ReadSome(HANDLE inHandle) {
    std::array<char, 16 * 1024> buffer{};
    DWORD size = 0;
    if (!ReadFile(inHandle, buffer.data(), static_cast<DWORD>(buffer.size()), &size, nullptr))
        size = 0;
    return {buffer.data(), size};
}

/** A pipe whose other end is closed counts: reading returns at once. */
bool IsReadable(HANDLE inHandle) {
    DWORD available = 0;
    return !PeekNamedPipe(inHandle, nullptr, 0, nullptr, &available, nullptr) || available != 0;
}

} // namespace

struct WnChild::Process {
    Pipe mToChild, mFromChild;
    Handle mProcess;
};

WnChild::WnChild(const std::vector<std::string>& inArguments) : mProcess(std::make_unique<Process>()) {
    const std::wstring program = GetProgramPath();
    std::string arguments;
    for (const std::string& argument : inArguments)
        arguments += ' ' + Quoted(argument);
    std::wstring line = L"\"" + program + L"\"" + Wide(arguments);
    const HANDLE input = mProcess->mToChild.mRead.Get(), output = mProcess->mFromChild.mWrite.Get();
    SetHandleInformation(input, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    SetHandleInformation(output, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input;
    start.hStdOutput = output;
    start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &start, &made))
        ThrowCannotStart();
    CloseHandle(made.hThread);
    *mProcess->mProcess.GetPlace() = made.hProcess;
    AssignProcessToJobObject(GetJob(), made.hProcess);
    mProcess->mToChild.mRead.Close();
    mProcess->mFromChild.mWrite.Close();
}

WnChild::~WnChild() {
    mProcess->mToChild.mWrite.Close();
    mProcess->mFromChild.mRead.Close();
    WaitForSingleObject(mProcess->mProcess.Get(), INFINITE);
}

bool WnChild::Send(const std::string& inBytes) {
    return WriteAll(mProcess->mToChild.mWrite.Get(), inBytes);
}

std::optional<std::string> WnChild::Receive() {
    const HANDLE handle = mProcess->mFromChild.mRead.Get();
    if (!IsReadable(handle))
        return std::string();
    std::string bytes = ReadSome(handle);
    return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
}

/** Plain pipes cannot be waited for. */
void WnChild::WaitForAny(std::span<const WnChild* const> inChildren, std::chrono::milliseconds inAtMost) {
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(inAtMost.count());
    const auto isReadable = [](const WnChild* inChild) {
        return IsReadable(inChild->mProcess->mFromChild.mRead.Get());
    };
    while (std::none_of(inChildren.begin(), inChildren.end(), isReadable) && GetTickCount64() < end)
        Sleep(1);
}

bool WnParent::Send(const std::string& inBytes) {
    return WriteAll(GetStdHandle(STD_OUTPUT_HANDLE), inBytes);
}

std::string WnParent::Receive() {
    return ReadSome(GetStdHandle(STD_INPUT_HANDLE));
}

bool WnParent::HasMore() {
    return IsReadable(GetStdHandle(STD_INPUT_HANDLE));
}
