#include "tests/support/testfolder.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include <unistd.h>

namespace fs = std::filesystem;

TestFolder::TestFolder() {
    std::string pattern = (fs::temp_directory_path() / "parvigif-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder for a test");
    mPath = pattern;
}

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
    setenv(inName, inValue.c_str(), 1);
}

TestVariable::~TestVariable() {
    if (mWasSet)
        setenv(mName.c_str(), mOldValue.c_str(), 1);
    else
        unsetenv(mName.c_str());
}

TestEnvironment::TestEnvironment(const TestFolder& inFolder)
    : mMachine("XDG_CONFIG_DIRS", inFolder / "machine"),
      mUser("XDG_CONFIG_HOME", inFolder / "user"),
      mState("XDG_STATE_HOME", inFolder / "state"),
      mTemporary("TMPDIR", inFolder.GetPath()) {}
