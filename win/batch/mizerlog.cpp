#include "win/batch/mizerlog.h"

#include <cerrno>
#include <cstring>

#include "win/batch/mizershell.h"
#include "win/batch/mizertotals.h"
#include "wnatom/wnpref.h"
#include "wnatom/wnsystem.h"

namespace {

constexpr std::size_t km_BufferSize = 64 * 1024; // no entry is longer, so each is one write

} // namespace

MizerLog::MizerLog(const WnPref& inPrefs, MizerShell& inShell) : mPrefs(inPrefs), mShell(inShell) {}

void MizerLog::WriteLogEntry(const std::string& inText) {
    std::uint32_t log = 0;
    mPrefs.ReadDWordDefault("LOG", log, 1);
    if (log == 0)
        return;
    OpenLog();
    if (!mStream)
        return;
    std::fwrite(inText.data(), 1, inText.size(), mStream.get());
    if (std::fflush(mStream.get()) != 0) {
        const std::string text =
            "Unable to write log file at: " + GetPath() + ", error " + std::strerror(errno);
        mShell.ShowMessage(text.c_str(), "Log write error", MizerShell::Icon::km_Stop);
        CloseLog();
    }
}

void MizerLog::OpenLog() {
    if (mStream)
        return;
    mStream = OpenOrTell("a+");
    if (mStream)
        std::setvbuf(mStream.get(), nullptr, _IOFBF, km_BufferSize);
}

bool MizerLog::ClearLog() {
    CloseLog();
    return OpenOrTell("w") != nullptr;
}

std::string MizerLog::GetPath() const {
    return mShell.GetDataFolder() + WnGetSeparator() + "PVGFLog.TXT";
}

MizerLog::Stream MizerLog::OpenOrTell(const char* inMode) {
    const std::string path = GetPath();
    Stream stream(std::fopen(path.c_str(), inMode));
    if (!stream) {
        const std::string text = "Unable to open log file at: " + path + ", error " + std::strerror(errno);
        mShell.ShowMessage(text.c_str(), "Log open error", MizerShell::Icon::km_Stop);
    }
    return stream;
}

std::string MizerEntryHead(std::chrono::sys_seconds inTime, const char* inPath) {
    const auto day = std::chrono::floor<std::chrono::days>(inTime);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(inTime - day);
    return std::to_string(static_cast<unsigned>(date.month())) + "/" +
           std::to_string(static_cast<unsigned>(date.day())) + "/" +
           std::to_string(static_cast<int>(date.year())) + "  " + std::to_string(time.hours().count()) + ":" +
           std::to_string(time.minutes().count()) + ":" + std::to_string(time.seconds().count()) +
           " File: \"" + inPath + "\" \n";
}

std::string MizerSmallerEntry(std::chrono::sys_seconds inTime, const char* inPath,
                              std::uint32_t inOriginalSize, std::uint32_t inNewSize) {
    const std::uint32_t saved = inOriginalSize - inNewSize;
    return MizerEntryHead(inTime, inPath) + "     " + std::to_string(saved) + " bytes saved (" +
           std::to_string(inOriginalSize) + " - " + std::to_string(inNewSize) + ") " +
           MizerPercentage(saved, inOriginalSize) + "\n";
}

std::string MizerUnchangedEntry(std::chrono::sys_seconds inTime, const char* inPath) {
    return MizerEntryHead(inTime, inPath) + "    File Unchanged.\n";
}
