#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

/** A private, empty folder below the system's temporary folder, removed with all it holds at the end of the
 *  test. */
class ScratchFolder {
public:
    ScratchFolder() {
        std::random_device random;
        const std::filesystem::path parent = std::filesystem::temp_directory_path();
        do
            mPath = parent / ("parvigif-test-" + std::to_string(random()) + std::to_string(random()));
        while (!std::filesystem::create_directory(mPath));
        std::filesystem::permissions(mPath, std::filesystem::perms::owner_all);
    }

    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }

    const std::filesystem::path& GetPath() const { return mPath; }

    /** The full path of inName in the folder, whether or not it exists. */
    std::string PathOf(std::string_view inName) const { return (mPath / inName).string(); }

    /** Writes a file and returns its full path. */
    std::string Write(std::string_view inName, std::string_view inBytes) const {
        const std::string path = PathOf(inName);
        std::ofstream file(path, std::ios::binary);
        if (!file.write(inBytes.data(), static_cast<std::streamsize>(inBytes.size())).flush())
            throw std::runtime_error("cannot write " + path);
        return path;
    }

    /** All bytes of a file in the folder. */
    std::string Read(std::string_view inName) const {
        std::ifstream file(PathOf(inName), std::ios::binary);
        if (!file)
            throw std::runtime_error("cannot read " + PathOf(inName));
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    bool Has(std::string_view inName) const { return std::filesystem::exists(mPath / inName); }

private:
    std::filesystem::path mPath;
};
