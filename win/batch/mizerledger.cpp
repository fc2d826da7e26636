#include "win/batch/mizerledger.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <optional>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnhash.h"
#include "wnatom/wnsafefile.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr std::uint64_t km_LargestFile = 4 << 20; // bytes; a line has about 40

std::optional<std::pair<std::uint64_t, std::size_t>> ContentOf(const char* inPath) {
    try {
        const std::vector<unsigned char> bytes = MizerReadWholeFile(inPath);
        return std::pair(WnHash({reinterpret_cast<const char*>(bytes.data()), bytes.size()}), bytes.size());
    } catch (const NvErrorCode&) {
        return std::nullopt;
    }
}

} // namespace

MizerLedger::MizerLedger(MizerDataFolder inFolder) : mFolder(std::move(inFolder)) {}

std::string MizerLedger::GetPath() const {
    return mFolder.MakePath("PVGFDone.TXT");
}

void MizerLedger::Load() {
    if (std::exchange(mIsLoaded, true))
        return;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(MizerDataFolder::Open(GetPath(), "rb"),
                                                               &std::fclose);
    std::string line;
    for (int byte = 0; file && byte != EOF; line.clear()) {
        while ((byte = std::getc(file.get())) != EOF && byte != '\n')
            line += static_cast<char>(byte);
        if (byte == EOF && line.empty())
            break;
        mEndsWithinALine = byte == EOF;
        std::uint64_t hash = 0;
        std::size_t size = 0;
        std::array<char, 32> kind{};
        int end = 0;
        const bool reads =
            std::sscanf(line.c_str(), "%16" SCNx64 " %zu %31s%n", &hash, &size, kind.data(), &end) == 3 &&
            static_cast<std::size_t>(end) == line.size();
        if (reads)
            mEntries.emplace(hash, size, kind.data());
    }
}

bool MizerLedger::IsKnown(const Content& inContent, const std::string& inKind) const {
    const auto has = [&](const std::string& inWord) {
        return mEntries.contains({inContent.first, inContent.second, inWord});
    };
    return has(inKind) || (inKind == km_Lossless && has(km_Lossy));
}

bool MizerLedger::Knows(const char* inPath, const std::string& inKind) {
    Load();
    if (mEntries.empty())
        return false;
    const auto content = ContentOf(inPath);
    return content && IsKnown(*content, inKind);
}

/** Lines that other runs add meanwhile may be lost: their files are tried once more. */
void MizerLedger::DropOldest() const {
    try {
        const std::string path = GetPath();
        const auto state = WnGetFileState(path.c_str());
        if (!state || state->mSize <= km_LargestFile || state->mSize > 2 * km_LargestFile)
            return; // beyond that, it is no list of ours
        const std::vector<unsigned char> bytes = MizerReadWholeFile(path.c_str());
        const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2);
        const auto line = std::find(middle, bytes.end(), '\n');
        WnSafeFile file(path.c_str());
        file.Write(&*middle + (line - middle), static_cast<std::size_t>(bytes.end() - line));
        file.Commit();
    } catch (const NvErrorCode&) {
        return; // the next run tries again
    }
}

void MizerLedger::Add(const char* inPath, const std::string& inKind, bool inComplains) {
    Load();
    const auto content = ContentOf(inPath);
    if (!content || IsKnown(*content, inKind) || mHasFailed)
        return;
    mEntries.emplace(content->first, content->second, inKind);
    std::array<char, 96> line{};
    std::snprintf(line.data(), line.size(), "%s%016" PRIx64 " %zu %s\n", mEndsWithinALine ? "\n" : "",
                  content->first, content->second, inKind.c_str());
    DropOldest();
    const std::string path = GetPath();
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(MizerDataFolder::Open(path, "ab"), &std::fclose);
    if (file && std::fputs(line.data(), file.get()) >= 0 && std::fflush(file.get()) == 0) {
        mEndsWithinALine = false;
        return;
    }
    if (inComplains)
        mFolder.ComplainOf(errno, PvText::km_LedgerNotWritten, path, PvText::km_LogWriteError);
    mHasFailed = true;
}
