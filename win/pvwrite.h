#pragma once

#include <cstdint>

class NvAnimation;

/** Writes an animation as a GIF file.
 *
 *  Frames get a graphic control extension when their delay, disposal, transparency or user input asks for
 * one; a still picture says nothing by its disposal and does without. The version is "89a" when anything in
 * the file needs it.
 *
 *  @param inPath  created or replaced
 *  @return        the file's length in bytes
 *  @throws NvErrorCode  those of NvFile; what is at inPath is then not a whole file */
std::uint32_t WriteOptimizedGIF(const char* inPath, NvAnimation& ioAnimation);
