#pragma once

#include <filesystem>
#include <memory>
#include <string>

/** A fresh folder for one test, removed with all that is in it. */
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    std::string GetPath() const { return mPath.string(); }
    /** Path of a name inside the folder. */
    std::string operator/(const std::string& inName) const {
        return (mPath / std::u8string(inName.begin(), inName.end())).string();
    }

private:
    std::filesystem::path mPath;
};

/** Writes a whole file, with the folders above it, and returns its path. */
std::string WriteTestFile(const std::string& inPath, const std::string& inBytes);

/** All bytes of a file; fails the test when it cannot be read. */
std::string ReadTestFile(const std::string& inPath);

/** Sets an environment variable for the life of the object. */
class TestVariable {
public:
    TestVariable(const char* inName, const std::string& inValue);
    ~TestVariable();
    TestVariable(const TestVariable&) = delete;
    TestVariable& operator=(const TestVariable&) = delete;

private:
    std::string mName;
    std::string mOldValue;
    bool mWasSet;
};

/** Points preferences, log and throw-away files into a folder, so that no test touches the user's own. */
class TestEnvironment {
public:
    explicit TestEnvironment(const TestFolder& inFolder);
    ~TestEnvironment();
    TestEnvironment(const TestEnvironment&) = delete;
    TestEnvironment& operator=(const TestEnvironment&) = delete;

private:
    struct Settings;

    std::unique_ptr<Settings> mSettings;
};
