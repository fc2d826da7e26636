// Any bytes as a GIF file. The last one holds the options, so that GIFs are seeds as they are.

#include "fuzz/checkgif.h"
#include "fuzz/fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize) {
    if (inSize > 0)
        CheckGIF({inData, inData + inSize}, inData[inSize - 1]);
    return 0;
}
