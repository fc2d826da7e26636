#include "win/batch/mizerledger.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <optional>

#include "nvcode2/base/nverrorcode.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnhash.h"

namespace {

constexpr const char* km_Lossy = "lossy";
constexpr const char* km_Lossless = "lossless";

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
        std::array<char, 16> kind{};
        int end = 0;
        const bool reads =
            std::sscanf(line.c_str(), "%16" SCNx64 " %zu %15s%n", &hash, &size, kind.data(), &end) == 3 &&
            static_cast<std::size_t>(end) == line.size();
        if (reads && kind.data() == std::string(km_Lossy))
            mLossy.emplace(hash, size);
        else if (reads && kind.data() == std::string(km_Lossless))
            mLossless.emplace(hash, size);
    }
}

bool MizerLedger::IsKnown(const Content& inContent, bool inIsLossless) const {
    return mLossy.contains(inContent) || (inIsLossless && mLossless.contains(inContent));
}

bool MizerLedger::Knows(const char* inPath, bool inIsLossless) {
    Load();
    if (mLossy.empty() && mLossless.empty())
        return false;
    const auto content = ContentOf(inPath);
    return content && IsKnown(*content, inIsLossless);
}

void MizerLedger::Add(const char* inPath, bool inIsLossless) {
    Load();
    const auto content = ContentOf(inPath);
    if (!content || IsKnown(*content, inIsLossless) || mHasFailed)
        return;
    (inIsLossless ? mLossless : mLossy).insert(*content);
    std::array<char, 80> line{};
    std::snprintf(line.data(), line.size(), "%s%016" PRIx64 " %zu %s\n", mEndsWithinALine ? "\n" : "",
                  content->first, content->second, inIsLossless ? km_Lossless : km_Lossy);
    const std::string path = GetPath();
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(MizerDataFolder::Open(path, "ab"), &std::fclose);
    if (file && std::fputs(line.data(), file.get()) >= 0 && std::fflush(file.get()) == 0) {
        mEndsWithinALine = false;
        return;
    }
    mFolder.ComplainOf(errno, "Unable to write the list of files done", path, "Log write error");
    mHasFailed = true;
}
