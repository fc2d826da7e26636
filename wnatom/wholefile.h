#pragma once

#include <vector>

class NvFile;

/** All bytes of a file. @throws NvErrorCode  1 when it cannot be read, whatever the reason; 2 */
std::vector<unsigned char> MizerReadWholeFile(const char* inPath);

/** Appends all of a file to one that is open for writing. @throws NvErrorCode  as MizerCopyFile */
void WnCopyInto(const char* inFromPath, NvFile& ioTarget);

/** Copies a file piece by piece, however large it is, over another.
 *  @throws NvErrorCode  1 when it cannot be read, whatever the reason; those of NvFile for the other */
void MizerCopyFile(const char* inFromPath, const char* inToPath);
