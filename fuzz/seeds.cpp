// Writes a few small valid inputs for each fuzz target below a folder: fuzz_seeds FOLDER

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/gifbytes.h"
#include "tests/support/lzwreference.h"

namespace {

void Write(const std::filesystem::path& inFolder, const char* inName, const std::string& inBytes) {
    std::filesystem::create_directories(inFolder);
    std::ofstream(inFolder / inName, std::ios::binary) << inBytes;
}

void WriteGIFs(const std::filesystem::path& inFolder) {
    const std::string data = ReferenceLZWEncode(2, {0, 1, 2, 3, 3, 2, 1, 0, 0, 0, 0, 0});
    const std::string loop = GIFApplication({"NETSCAPE2.0", "\1\2\0"s});
    Write(inFolder, "pixel.gif", km_SmallHeader + km_OnePixelFrame + ';');
    Write(inFolder, "old.gif",
          GIFHeader(4, 3, 0xF1, "87a") + GIFTable(4) + GIFDescriptor(0, 0, 4, 3, 0) + data + ';');
    Write(inFolder, "animation.gif",
          GIFHeader(5, 5, 0x81) + GIFTable(4) + loop + GIFComment({"hello", "there"}) + GIFControl(5, 10, 3) +
              GIFDescriptor(0, 0, 4, 3, 0) + data + GIFControl(13, 0, 1) + GIFDescriptor(1, 1, 3, 4, 0x40) +
              data + GIFExtension(1, {"123456789012", "text"}) + '\0' + GIFDescriptor(0, 2, 4, 3, 0xC1) +
              GIFTable(4) + data + ';');
}

void WriteStreams(const std::filesystem::path& inFolder) {
    Indices pixels;
    for (unsigned i = 0; i < 400; ++i)
        pixels.push_back(static_cast<std::uint8_t>(i * i / 7 % 4));
    const std::string shape = {'\x13', '\x13', '\x01'}; // 20 by 20 pixels
    Write(inFolder, "decode", '\0' + shape + ReferenceLZWEncode(2, pixels));
    Write(inFolder, "decode-interlaced", '\2' + shape + ReferenceLZWEncode(3, pixels));
    Write(inFolder, "decode-size-1", "\0\2\0\0\1"s + PackLZWCodes({{2, 2}, {0, 2}, {1, 2}, {0, 3}, {3, 3}}));
    Write(inFolder, "encode-8-bits", "\xFD\xFF\x3F\0"s + std::string(pixels.begin(), pixels.end()));
    Write(inFolder, "encode-1-bit", "\xE3\xFF\x3F\3"s + std::string(pixels.begin(), pixels.end()));
}

} // namespace

int main(int inCount, char** inArguments) {
    if (inCount != 2) {
        std::fputs("usage: fuzz_seeds FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = inArguments[1];
    WriteGIFs(folder / "gif_reader");
    WriteStreams(folder / "lzw");
    return 0;
}
