#pragma once

#include <vector>

/** All bytes of a file. @throws NvErrorCode  1 when it cannot be read, whatever the reason; 2 */
std::vector<unsigned char> MizerReadWholeFile(const char* inPath);

/** Copies a file piece by piece, however large it is, over another.
 *  @throws NvErrorCode  1 when it cannot be read, whatever the reason; those of NvFile for the other */
void MizerCopyFile(const char* inFromPath, const char* inToPath);
