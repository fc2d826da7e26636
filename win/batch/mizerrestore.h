#pragma once

#include <chrono>
#include <cstdint>
#include <string>

/** The name of a picture's backup: its whole name with ".BAK" appended. */
std::string MizerBackupName(const std::string& inPath);

enum class MizerRestored {
    km_Restored,
    km_NoBackup,   ///< there is none
    km_OtherImage, ///< the picture has another screen or other frames, so it was not made from this backup
    km_InUse,      ///< another process works on the picture
};

/** Puts a backup back in its picture's place, in one step; the backup stays. The picture may be missing.
 *
 *  What is renamed has been read as a GIF from the first to the last frame. Links and permissions stay as
 *  when a file is made smaller.
 *
 *  @param inMemoryLimit  bytes that reading it may need; 0: the usual limit
 *  @throws NvErrorCode   why the backup is no sound GIF or the picture could not be replaced; it is as it was
 */
MizerRestored MizerRestore(const std::string& inPath, std::uint64_t inMemoryLimit);

/** The log's entry. */
std::string MizerRestoredEntry(std::chrono::sys_seconds inTime, const char* inPath);
