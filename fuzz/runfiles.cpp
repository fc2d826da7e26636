// Runs a fuzz target over files and changed copies of them, for compilers without a fuzzer:
//     fuzz_TARGET CHANGES FOLDER...
// What fails is left in ./failed-input.

#include <algorithm>
#include <filesystem>
#include <random>

#include "fuzz/fuzz.h"
#include "tests/support/testfolder.h"

namespace {

void Run(const std::string& inBytes) {
    WriteTestFile("./failed-input", inBytes);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(inBytes.data()), inBytes.size());
    std::filesystem::remove("failed-input");
}

std::string Change(std::string inBytes, std::mt19937& ioRandom) {
    for (auto changes = 1 + ioRandom() % 4; changes > 0 && !inBytes.empty(); --changes) {
        const std::size_t at = ioRandom() % inBytes.size();
        if (ioRandom() % 8 == 0)
            inBytes.insert(at, inBytes, ioRandom() % inBytes.size(), ioRandom() % 16);
        else if (ioRandom() % 8 == 0)
            inBytes.erase(at, ioRandom() % 16);
        else
            inBytes[at] = static_cast<char>(ioRandom() % 2 ? ioRandom() : inBytes[at] ^ 1 << ioRandom() % 8);
    }
    return inBytes;
}

} // namespace

int main(int inCount, char** inArguments) {
    Require(inCount > 2, "usage: CHANGES FOLDER...");
    std::vector<std::string> names;
    for (int i = 2; i < inCount; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(inArguments[i]))
            names.push_back(entry.path().string());
    std::sort(names.begin(), names.end());
    std::mt19937 random(1);
    for (const std::string& name : names) {
        const std::string bytes = ReadTestFile(name);
        Run(bytes);
        for (int change = std::atoi(inArguments[1]); change > 0; --change)
            Run(Change(bytes, random));
    }
    return 0;
}
