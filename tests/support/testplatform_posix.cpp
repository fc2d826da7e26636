#include "tests/support/testplatform.h"

#include "tests/support/test.h"

#include <stdexcept>

std::string MakeTestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "parvigif-test-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("no temporary folder for a test");
    return pattern;
}

void SetTestVariable(const char* inName, const char* inValue) {
    if (inValue)
        setenv(inName, inValue, 1);
    else
        unsetenv(inName);
}

struct TestEnvironment::Settings {
    explicit Settings(const TestFolder& inFolder)
        : mMachine("XDG_CONFIG_DIRS", inFolder / "machine"),
          mUser("XDG_CONFIG_HOME", inFolder / "user"),
          mState("XDG_STATE_HOME", inFolder / "state"),
          mTemporary("TMPDIR", inFolder.GetPath()) {}

    TestVariable mMachine, mUser, mState, mTemporary;
};

TestEnvironment::TestEnvironment(const TestFolder& inFolder)
    : mSettings(std::make_unique<Settings>(inFolder)) {}

TestEnvironment::~TestEnvironment() = default;
