#include "win/batch/mizerlog.h"

#include <cerrno>
#include <utility>

#include "win/batch/mizertotals.h"

namespace {

constexpr std::size_t km_BufferSize = 64 * 1024; // no entry is longer, so each is one write

} // namespace

MizerLog::MizerLog(MizerDataFolder inFolder) : mFolder(std::move(inFolder)) {}

void MizerLog::WriteLogEntry(const std::string& inText) {
    OpenLog();
    if (!mStream)
        return;
    std::fwrite(inText.data(), 1, inText.size(), mStream.get());
    if (std::fflush(mStream.get()) != 0) {
        const int error = errno;
        mFolder.ComplainOf(error, "Unable to write log file at", GetPath(), "Log write error");
        CloseLog();
    }
}

void MizerLog::OpenLog() {
    if (mStream)
        return;
    mStream = OpenOrComplain("a+");
    if (mStream)
        std::setvbuf(mStream.get(), nullptr, _IOFBF, km_BufferSize);
}

bool MizerLog::ClearLog() {
    CloseLog();
    return OpenOrComplain("w") != nullptr;
}

std::string MizerLog::GetPath() const {
    return mFolder.MakePath("PVGFLog.TXT");
}

MizerLog::Stream MizerLog::OpenOrComplain(const char* inMode) const {
    const std::string path = GetPath();
    Stream stream(MizerDataFolder::Open(path, inMode));
    if (!stream)
        mFolder.ComplainOf(errno, "Unable to open log file at", path, "Log open error");
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

std::string MizerUnchangedEntry(std::chrono::sys_seconds inTime, const char* inPath,
                                const std::string& inReason) {
    return MizerEntryHead(inTime, inPath) + "    File Unchanged.\n" +
           (inReason.empty() ? "" : "     " + inReason + "\n");
}

std::string MizerRestoredEntry(std::chrono::sys_seconds inTime, const char* inPath) {
    return MizerEntryHead(inTime, inPath) + "    Restored from its backup.\n";
}
