#pragma once

#include "nvcode2/file/nvfile.h"
#include "tests/support/test.h"

class FileTest : public testing::Test {
protected:
    std::string PathWith(const std::string& inBytes) { return WriteTestFile(mFolder / "file", inBytes); }
    NvFile FileWith(const std::string& inBytes) { return NvFile(PathWith(inBytes).c_str()); }
    std::string Content() { return ReadTestFile(mFolder / "file"); }

    TestFolder mFolder;
};

/** What inFile holds from the position on, at most inCount bytes, read in one go. */
inline std::string ReadText(NvFile& ioFile, std::uint32_t inCount) {
    std::string text(inCount, '\0');
    text.resize(ioFile.Read(text.data(), inCount));
    return text;
}
