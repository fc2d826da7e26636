#pragma once

#include <string>

/** The base directories as freedesktop.org names them, and what is needed to fill them. POSIX only. */

/** An absolute path from the environment; empty when unset, empty or relative. */
std::string WnGetPathFromEnvironment(const char* inVariable);

/** The user's home folder: $HOME, else what the user database says, else "/". */
std::string WnGetHomeFolder();

/** Where throw-away files go: $TMPDIR, else "/tmp". */
std::string WnGetTemporaryFolder();

/** Makes a folder and those above it that are missing (mode 0700). @return whether it exists now. */
bool WnMakeFolders(const std::string& inPath);

/** The part of a path that names its folder: "." when it has no slash, "/" for the root. */
std::string WnGetFolderOf(const std::string& inPath);
