#pragma once

#include <string>

/** Folders on Windows. Windows only; paths are wide and without a closing separator. */

/** The user's folder for throw-away files. */
std::wstring WnGetTemporaryFolder();

/** The part of a path that names its folder, separator included; empty when it has none. */
std::wstring WnGetFolderOf(const std::wstring& inPath);

constexpr std::size_t km_RandomNameSize = 6;

/** Letters and digits, km_RandomNameSize of them, for names of new files: they cannot be foreseen. */
std::wstring WnGetRandomName();
