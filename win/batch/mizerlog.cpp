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
        mFolder.ComplainOf(error, PvText::km_LogNotWritten, GetPath(), PvText::km_LogWriteError);
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
        mFolder.ComplainOf(errno, PvText::km_LogNotOpened, path, PvText::km_LogOpenError);
    return stream;
}

std::string MizerEntryHead(std::chrono::sys_seconds inTime, const char* inPath) {
    const auto day = std::chrono::floor<std::chrono::days>(inTime);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(inTime - day);
    const auto number = [](auto inNumber) { return std::to_string(inNumber); };
    return PvSay(PvText::km_LogHead,
                 {number(static_cast<unsigned>(date.month())), number(static_cast<unsigned>(date.day())),
                  number(static_cast<int>(date.year())), number(time.hours().count()),
                  number(time.minutes().count()), number(time.seconds().count()), inPath});
}

std::string MizerSmallerEntry(std::chrono::sys_seconds inTime, const char* inPath,
                              std::uint32_t inOriginalSize, std::uint32_t inNewSize) {
    const std::uint32_t saved = inOriginalSize - inNewSize;
    return MizerEntryHead(inTime, inPath) +
           PvSay(PvText::km_LogSmaller,
                 {PvSay(PvText::km_BytesSaved, {std::to_string(saved)}), std::to_string(inOriginalSize),
                  std::to_string(inNewSize), MizerPercentage(saved, inOriginalSize)});
}

std::string MizerUnchangedEntry(std::chrono::sys_seconds inTime, const char* inPath,
                                const std::string& inReason) {
    return MizerEntryHead(inTime, inPath) + PvSay(PvText::km_LogUnchanged) +
           (inReason.empty() ? "" : PvSay(PvText::km_LogReason, {inReason}));
}

std::string MizerRestoredEntry(std::chrono::sys_seconds inTime, const char* inPath) {
    return MizerEntryHead(inTime, inPath) + PvSay(PvText::km_LogRestored);
}
