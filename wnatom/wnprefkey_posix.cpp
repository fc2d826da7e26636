#include "wnatom/wnprefkey.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wnfolders_posix.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

// A key is a text file of lines NAME=VALUE. Lines that do not read so are left alone: comments survive, and
// a damaged line costs only itself. The file is replaced as a whole, under the lock of a file beside it,
// so readers need no lock.

namespace {

constexpr off_t km_MaxFileSize = 1 << 20; // beyond it, it is no preferences file of ours

std::string Trimmed(std::string_view inText) {
    const std::size_t first = inText.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return std::string(inText.substr(first, inText.find_last_not_of(" \t\r") - first + 1));
}

/** The value of a line that carries the name. */
std::optional<std::string> GetValue(const std::string& inLine, std::string_view inName) {
    const std::size_t equals = inLine.find('=');
    if (equals == std::string::npos || Trimmed(std::string_view(inLine).substr(0, equals)) != inName)
        return std::nullopt;
    return Trimmed(std::string_view(inLine).substr(equals + 1));
}

std::optional<std::uint32_t> ParseNumber(const std::string& inText) {
    std::uint32_t value = 0;
    const char* end = inText.data() + inText.size();
    const auto [stop, error] = std::from_chars(inText.data(), end, value);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

/** First entry of $XDG_CONFIG_DIRS. */
std::string GetMachineFolder() {
    const std::string folders = WnGetPathFromEnvironment("XDG_CONFIG_DIRS");
    return folders.empty() ? "/etc/xdg" : folders.substr(0, folders.find(':'));
}

std::string GetUserFolder() {
    const std::string folder = WnGetPathFromEnvironment("XDG_CONFIG_HOME");
    return folder.empty() ? WnGetHomeFolder() + "/.config" : folder;
}

/** "Software\Maker\Product\Version" becomes "<root>/Maker/Product/Version.ini". */
std::string GetFilePath(WnPrefKey::Root inRoot, std::string inKeyPath) {
    constexpr std::string_view registryBranch = "Software\\";
    if (inKeyPath.starts_with(registryBranch))
        inKeyPath.erase(0, registryBranch.size());
    std::replace(inKeyPath.begin(), inKeyPath.end(), '\\', '/');
    return (inRoot == WnPrefKey::km_Machine ? GetMachineFolder() : GetUserFolder()) + "/" + inKeyPath +
           ".ini";
}

/** Whether both roots' environment variables lead to one folder, as in trials. */
bool AreOneRoot() {
    const std::string machine = GetMachineFolder();
    const std::string user = GetUserFolder();
    std::error_code ignored;
    return machine == user || std::filesystem::equivalent(machine, user, ignored);
}

bool ReadLines(const std::string& inPath, std::vector<std::string>& outLines) {
    struct stat status {};
    if (stat(inPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > km_MaxFileSize)
        return false;
    std::FILE* file = std::fopen(inPath.c_str(), "rbe");
    if (!file)
        return false;
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    const bool whole = !std::ferror(file) && std::fgetc(file) == EOF;
    std::fclose(file);
    outLines.clear();
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        outLines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return whole;
}

void SetLine(std::vector<std::string>& ioLines, const char* inName, const std::string& inText) {
    std::erase_if(ioLines, [&](const std::string& line) { return GetValue(line, inName).has_value(); });
    ioLines.push_back(std::string(inName) + "=" + inText);
}

bool ReplaceFile(const std::string& inPath, const std::vector<std::string>& inLines) {
    std::string text;
    for (const std::string& line : inLines)
        text += line + "\n";
    try {
        WnSafeFile file(inPath.c_str());
        file.Write(text.data(), text.size());
        file.Commit();
        return true;
    } catch (const NvErrorCode&) {
        return false;
    }
}

/** The lock of the writers, or -1 when another process keeps it and writes nothing for so long that it must
 *  be stuck. Many that write one after the other may take any time. */
int LockForWriting(const std::string& inPath) {
    using Clock = std::chrono::steady_clock;
    const int lock = open((inPath + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (lock < 0)
        return -1;
    constexpr std::chrono::milliseconds pause(5); // a write takes about as long
    constexpr std::chrono::seconds patience(10);
    auto state = WnGetFileState(inPath.c_str());
    auto end = Clock::now() + patience;
    while (flock(lock, LOCK_EX | LOCK_NB) != 0) {
        const bool isBusy = errno == EWOULDBLOCK || errno == EINTR;
        if (!isBusy || Clock::now() > end) {
            close(lock);
            return -1;
        }
        std::this_thread::sleep_for(pause);
        if (auto now = WnGetFileState(inPath.c_str()); now != state) {
            state = now;
            end = Clock::now() + patience;
        }
    }
    return lock;
}

} // namespace

struct WnPrefKey::Handle {
    std::string mPath;
    std::vector<std::string> mLines;
    int mLock = -1; // open while the key may be written
};

WnPrefKey::WnPrefKey(const char* inKeyPath) : mKeyPath(inKeyPath) {}

WnPrefKey::~WnPrefKey() {
    CloseKey();
}

std::string WnPrefKey::FindOversized(Root inRoot, const char* inKeyPath) {
    std::string path = GetFilePath(inRoot, inKeyPath);
    const auto state = WnGetFileState(path.c_str());
    return state && state->mSize > km_MaxFileSize ? path : std::string();
}

bool WnPrefKey::OpenKey(Root inRoot, Access inAccess) {
    if (mHandle)
        return false;
    if (inRoot == km_User && AreOneRoot())
        return false; // it counts once, as the machine's
    auto handle = std::make_unique<Handle>();
    handle->mPath = GetFilePath(inRoot, mKeyPath);
    if (inAccess == km_ReadWrite) {
        if (!WnMakeFolders(WnGetFolderOf(handle->mPath)))
            return false;
        handle->mLock = LockForWriting(handle->mPath);
        if (handle->mLock < 0)
            return false;
    }
    const bool read = ReadLines(handle->mPath, handle->mLines);
    mHandle = std::move(handle);
    if (read || (inAccess == km_ReadWrite && access(mHandle->mPath.c_str(), F_OK) != 0))
        return true;
    CloseKey(); // nothing to read, or something that must not be written over
    return false;
}

void WnPrefKey::CloseKey() {
    if (mHandle && mHandle->mLock >= 0)
        close(mHandle->mLock);
    mHandle.reset();
}

bool WnPrefKey::ReadDWord(const char* inName, std::uint32_t& outValue) const {
    for (const std::string& line : mHandle->mLines) {
        const auto text = GetValue(line, inName);
        const auto number = text ? ParseNumber(*text) : std::nullopt;
        if (number) {
            outValue = *number;
            return true;
        }
    }
    return false;
}

bool WnPrefKey::ReadString(const char* inName, std::string& outText) const {
    for (const std::string& line : mHandle->mLines) {
        if (const auto text = GetValue(line, inName)) {
            outText = *text;
            return true;
        }
    }
    return false;
}

bool WnPrefKey::WriteDWord(const char* inName, std::uint32_t inValue) {
    return WriteString(inName, std::to_string(inValue));
}

bool WnPrefKey::WriteDWords(std::span<const WnPrefNumber> inNumbers) {
    for (const WnPrefNumber& number : inNumbers)
        SetLine(mHandle->mLines, number.mName, std::to_string(number.mValue));
    return ReplaceFile(mHandle->mPath, mHandle->mLines);
}

bool WnPrefKey::WriteString(const char* inName, const std::string& inText) {
    SetLine(mHandle->mLines, inName, inText);
    return ReplaceFile(mHandle->mPath, mHandle->mLines);
}
