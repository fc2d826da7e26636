#include "tests/support/test.h"
#include "tests/support/testplatform.h"

namespace fs = std::filesystem;

TestFolder::TestFolder() : mPath(MakeTestFolder()) {}

TestFolder::~TestFolder() {
    std::error_code ignored;
    fs::remove_all(mPath, ignored);
}

std::string WriteTestFile(const std::string& inPath, const std::string& inBytes) {
    fs::create_directories(fs::path(inPath).parent_path());
    std::ofstream file(inPath, std::ios::binary);
    file << inBytes;
    file.close();
    EXPECT_TRUE(file) << "cannot write " << inPath;
    return inPath;
}

std::string ReadTestFile(const std::string& inPath) {
    std::ifstream file(inPath, std::ios::binary);
    EXPECT_TRUE(file) << "cannot read " << inPath;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

TestVariable::TestVariable(const char* inName, const std::string& inValue) : mName(inName) {
    const char* old = std::getenv(inName);
    mWasSet = old != nullptr;
    if (old)
        mOldValue = old;
    SetTestVariable(inName, inValue.c_str());
}

TestVariable::~TestVariable() {
    SetTestVariable(mName.c_str(), mWasSet ? mOldValue.c_str() : nullptr);
}
