#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "win/batch/mizerdatafolder.h"

/** The results log: a text file in the data folder with one entry per optimized file.
 *
 *  It is opened at the first entry and stays open. An entry reaches the file in one write at its end, so runs
 *  side by side never mix theirs and a crash loses none. */
class MizerLog {
public:
    explicit MizerLog(MizerDataFolder inFolder);

    /** Appends a text. When the log cannot be opened or written that is reported and the entry is dropped;
     *  the next one tries again. */
    void WriteLogEntry(const std::string& inText);

    /** Does nothing when the log is open. */
    void OpenLog();
    void CloseLog() { mStream.reset(); }

    /** Empties the log; the next entry opens it again. @return whether it is empty now; else why not was
     *  reported */
    bool ClearLog();

    std::string GetPath() const;

private:
    struct Closer {
        void operator()(std::FILE* inStream) const { std::fclose(inStream); }
    };
    using Stream = std::unique_ptr<std::FILE, Closer>;

    Stream OpenOrComplain(const char* inMode) const;

    MizerDataFolder mFolder;
    Stream mStream; // null while the log is closed
};

/** What every entry starts with: "month/day/year  hour:minute:second File: "path" \n" without zero padding.
 *  @param inPath  the full one, whatever the person named */
std::string MizerEntryHead(std::chrono::sys_seconds inTime, const char* inPath);

/** The log's entries; times are UTC, sizes bytes. */
std::string MizerSmallerEntry(std::chrono::sys_seconds inTime, const char* inPath,
                              std::uint32_t inOriginalSize, std::uint32_t inNewSize);

/** @param inReason  in words, or empty when nothing smaller was found */
std::string MizerUnchangedEntry(std::chrono::sys_seconds inTime, const char* inPath,
                                const std::string& inReason);
std::string MizerRestoredEntry(std::chrono::sys_seconds inTime, const char* inPath);
