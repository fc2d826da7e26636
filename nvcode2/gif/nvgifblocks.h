#pragma once

#include <cstdint>

/** The fixed bytes of a GIF file, for its reader and its writer. */

inline constexpr char km_Signature[] = "GIF";
inline constexpr char km_Version87a[] = "87a";
inline constexpr char km_Version89a[] = "89a";

inline constexpr std::uint8_t km_Extension = 0x21;      // introducer, a label follows
inline constexpr std::uint8_t km_ImageSeparator = 0x2C; // introducer of an image descriptor
inline constexpr std::uint8_t km_Trailer = 0x3B;

inline constexpr std::uint8_t km_GraphicControl = 0xF9; // extension labels
inline constexpr std::uint8_t km_Comment = 0xFE;
inline constexpr std::uint8_t km_Application = 0xFF;

inline constexpr std::uint8_t km_GraphicControlSize = 4;
inline constexpr std::uint8_t km_ApplicationIdentifierSize = 11;
inline constexpr char km_LoopIdentifier[] = "NETSCAPE2.0";      // written
inline constexpr char km_OtherLoopIdentifier[] = "ANIMEXTS1.0"; // read alike

inline constexpr std::uint8_t km_TableFlag = 0x80; // of the packed bytes of screen and image descriptor
