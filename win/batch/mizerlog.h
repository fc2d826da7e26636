#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

class MizerShell;
class WnPref;

/** The results log: a text file in the data folder with one entry per optimized file.
 *
 *  It is opened at the first entry and stays open. An entry reaches the file in one write at its end, so runs
 *  side by side never mix theirs and a crash loses none. */
class MizerLog {
public:
    /** Both are borrowed for the log's life. */
    MizerLog(const WnPref& inPrefs, MizerShell& inShell);

    /** Appends a text unless the preference LOG is 0. When the log cannot be opened the user is told and the
     *  entry is dropped; the next one tries again. */
    void WriteLogEntry(const std::string& inText);

    /** Does nothing when the log is open. */
    void OpenLog();
    void CloseLog() { mStream.reset(); }

    /** Empties the log; the next entry opens it again. @return whether it is empty now; else the user was
     *  told why */
    bool ClearLog();

    /** Computed afresh each time, since the data folder may come and go. */
    std::string GetPath() const;

private:
    struct Closer {
        void operator()(std::FILE* inStream) const { std::fclose(inStream); }
    };
    using Stream = std::unique_ptr<std::FILE, Closer>;

    Stream OpenOrTell(const char* inMode);

    const WnPref& mPrefs;
    MizerShell& mShell;
    Stream mStream; // null while the log is closed
};

/** What every entry starts with: "month/day/year  hour:minute:second File: "path" \n" without zero padding.
 */
std::string MizerEntryHead(std::chrono::sys_seconds inTime, const char* inPath);

/** The log's entries; times are UTC, sizes bytes. */
std::string MizerSmallerEntry(std::chrono::sys_seconds inTime, const char* inPath,
                              std::uint32_t inOriginalSize, std::uint32_t inNewSize);
std::string MizerUnchangedEntry(std::chrono::sys_seconds inTime, const char* inPath);
