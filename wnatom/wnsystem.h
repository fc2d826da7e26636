#pragma once

#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/** What the program asks of the machine and its file systems beyond reading and writing files. */

/** Bytes of physical memory. */
std::uint64_t WnGetPhysicalMemory();

/** Bytes that the work on one file may need unless another limit is set: half the physical memory, at least
 *  1 GiB. */
std::uint64_t WnGetUsualMemoryLimit();

/** The per-user folder for the results log, without a closing separator; made when missing. When it cannot
 *  be made: a private folder below the temporary one; on Windows "C:\Windows". */
std::string WnGetDataFolder();

/** Which file a name leads to: two names with equal identities are one file. */
struct WnFileIdentity {
    std::uint64_t mDevice = 0;
    std::uint64_t mInode = 0;
    auto operator<=>(const WnFileIdentity&) const = default; // NOLINT(modernize-use-nullptr): its generated 0
};

/** Shows whether a file is still the same and unchanged: writing to it, replacing it, and changing its
 *  permissions or times all change this. */
struct WnFileState {
    WnFileIdentity mIdentity;
    std::uint64_t mSize = 0;    ///< bytes
    std::int64_t mModified = 0; ///< time of the last write, in the file system's finest units
    std::int64_t mChanged = 0;  ///< time of the last change to anything about it, which cannot be set back
    bool operator==(const WnFileState&) const = default;
};

enum class WnFileKind { km_Missing, km_RegularFile, km_Folder, km_Other };

/** What stands at a path, symbolic links followed. A link to nothing is km_Other: something is there, but
 *  nothing that could be read.
 *  @throws NvErrorCode 14 without the right to look, else by the runtime's error number */
WnFileKind WnGetFileKind(const char* inPath);

/** Identity of the file that a path leads to, links followed; nothing when there is none. */
std::optional<WnFileIdentity> WnGetFileIdentity(const char* inPath);

/** State of the file that a path leads to, links followed; nothing when there is none. */
std::optional<WnFileState> WnGetFileState(const char* inPath);

/** State of an open file; nothing when it cannot be read. */
std::optional<WnFileState> WnGetOpenFileState(int inDescriptor);

/** Names of the regular files (links followed) directly inside a folder, in bytewise order.
 *  @throws NvErrorCode 14 without the right to read the folder, else by the runtime's error number */
std::vector<std::string> WnListFiles(const char* inFolder);

/** The same for the folders inside it; without links to folders, so that a walk never runs in a circle. */
std::vector<std::string> WnListFolders(const char* inFolder);

/** A path for the file functions of the standard library, which on Windows do not take UTF-8 for granted. */
std::filesystem::path WnMakePath(const std::string& inPath);

/** The path from the root on, without dots; links stay. The path itself when the working folder is gone. */
std::string WnGetFullPath(const std::string& inPath);

/** Whether a character separates path parts; the separator to write. */
bool WnIsSeparator(char inCharacter);
char WnGetSeparator();
