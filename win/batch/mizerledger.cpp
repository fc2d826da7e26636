#include "win/batch/mizerledger.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>

#include "nvcode2/base/nverrorcode.h"
#include "win/batch/mizershell.h"
#include "wnatom/wholefile.h"
#include "wnatom/wnhash.h"
#include "wnatom/wnsystem.h"

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

MizerLedger::MizerLedger(MizerShell& inShell, bool inIsLossless)
    : mShell(inShell), mIsLossless(inIsLossless) {}

std::string MizerLedger::GetPath() const {
    return mShell.GetDataFolder() + WnGetSeparator() + "PVGFDone.TXT";
}

void MizerLedger::Load() {
    if (std::exchange(mIsLoaded, true))
        return;
    std::ifstream file(GetPath(), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        mEndsWithinALine = file.eof();
        std::uint64_t hash = 0;
        std::size_t size = 0;
        std::array<char, 16> kind{};
        int end = 0;
        const bool reads =
            std::sscanf(line.c_str(), "%16" SCNx64 " %zu %15s%n", &hash, &size, kind.data(), &end) == 3 &&
            static_cast<std::size_t>(end) == line.size();
        if (reads && (kind.data() == std::string(km_Lossy) ||
                      (mIsLossless && kind.data() == std::string(km_Lossless))))
            mKnown.emplace(hash, size);
    }
}

bool MizerLedger::Knows(const char* inPath) {
    Load();
    if (mKnown.empty())
        return false;
    const auto content = ContentOf(inPath);
    return content && mKnown.contains(*content);
}

void MizerLedger::Add(const char* inPath) {
    Load();
    const auto content = ContentOf(inPath);
    if (!content || !mKnown.insert(*content).second || mHasFailed)
        return;
    std::array<char, 80> line{};
    std::snprintf(line.data(), line.size(), "%s%016" PRIx64 " %zu %s\n", mEndsWithinALine ? "\n" : "",
                  content->first, content->second, mIsLossless ? km_Lossless : km_Lossy);
    const std::string path = GetPath();
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "ab"), &std::fclose);
    if (file && std::fputs(line.data(), file.get()) >= 0 && std::fflush(file.get()) == 0) {
        mEndsWithinALine = false;
        return;
    }
    const std::string text =
        "Unable to write the list of files done: " + path + ", error " + std::strerror(errno);
    mShell.ShowMessage(text.c_str(), "Log write error", MizerShell::Icon::km_Stop);
    mHasFailed = true;
}
