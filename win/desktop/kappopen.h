#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include <shellapi.h>

/** The ways in which the user names files; all paths are UTF-8. */

/** The "Open File(s)..." dialog. @return what was chosen, nothing when it was cancelled
 *  @throws std::bad_alloc  for an enormous selection */
std::vector<std::string> KAppChooseFiles(HWND inOwner);

/** The "Open Folder..." dialog. @return empty when it was cancelled */
std::string KAppChooseFolder(HWND inOwner);

/** What was dropped on a window; frees the drop. */
std::vector<std::string> KAppTakeDropped(HDROP inDrop);

/** The names on the command line, without the program's. */
std::vector<std::string> KAppGetArguments();
