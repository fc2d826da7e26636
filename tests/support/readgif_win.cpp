#include "tests/support/testfolder.h"
#include "tests/support/testgif.h"

TestGIF ReadGIF(const std::string& inPath) {
    return TryReadGIF(inPath).value();
}

std::optional<TestGIF> TryReadGIF(const std::string& inPath) {
    return PlainReadGIF(ReadTestFile(inPath));
}
