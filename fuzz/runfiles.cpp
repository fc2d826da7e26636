// Runs a fuzz target over files, for compilers without a fuzzer.

#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz.h"

int main(int inCount, char** inNames) {
    for (int i = 1; i < inCount; ++i) {
        std::ifstream file(inNames[i], std::ios::binary);
        Require(file.is_open(), inNames[i]);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return 0;
}
