// GIF files built block by block from the input: nearly valid ones, with frames anywhere, tables of any size
// or none, pixels beyond them, data that end early, run over or hold any codes.

#include "fuzz/checkgif.h"
#include "fuzz/fuzz.h"
#include "tests/support/gifbytes.h"
#include "tests/support/lzwreference.h"

namespace {

/** Takes decisions from the input, all zero when it is used up. */
class Decisions {
public:
    Decisions(const std::uint8_t* inData, std::size_t inSize) : mNext(inData), mEnd(inData + inSize) {}

    unsigned Byte() { return mNext < mEnd ? *mNext++ : 0; }
    unsigned Below(unsigned inLimit) { return Byte() % inLimit; }
    bool HasMore() const { return mNext < mEnd; }

private:
    const std::uint8_t* mNext;
    const std::uint8_t* mEnd;
};

std::string Table(Decisions& ioInput, unsigned inPacked) {
    std::string table;
    const unsigned step = ioInput.Byte();
    for (unsigned i = 0; inPacked & 0x80 && i < 3 * (2U << (inPacked & 7)); ++i)
        table += static_cast<char>(i * step + i / 3);
    return table;
}

std::string ImageData(Decisions& ioInput, unsigned inPixels) {
    const unsigned size = ioInput.Below(16) ? 2 + ioInput.Below(7) : ioInput.Below(14);
    const unsigned kind = ioInput.Below(8);
    const bool isSound = kind < 5 && size >= 2 && size <= 8;
    const unsigned count = isSound && kind > 2 ? ioInput.Byte() * 2 : inPixels; // mostly short, or over
    const unsigned rule = ioInput.Byte();
    Indices pixels;
    std::vector<LZWCode> codes{{1U << size, size + 1}};
    for (unsigned i = 0; i < count && i < 4096; ++i) {
        const unsigned value = i < 32 && ioInput.HasMore() ? ioInput.Byte() : i * rule >> (rule & 7);
        if (isSound)
            pixels.push_back(static_cast<std::uint8_t>(value & ((1U << size) - 1)));
        else
            codes.push_back({value | (ioInput.Below(4) << 8), size + 1 + (i >> size)});
    }
    return isSound ? ReferenceLZWEncode(size, pixels) : static_cast<char>(size) + PackLZWCodes(codes);
}

std::string Frame(Decisions& ioInput) {
    std::string bytes;
    if (ioInput.Below(4))
        bytes = GIFControl(ioInput.Byte(), ioInput.Byte(), ioInput.Below(20));
    const unsigned packed = ioInput.Byte() & (ioInput.Below(3) ? 0x40 : 0xFF);
    const unsigned width = ioInput.Below(20);
    const unsigned height = ioInput.Below(20);
    bytes += GIFDescriptor(ioInput.Below(24), ioInput.Below(24), width, height, packed);
    bytes += Table(ioInput, packed);
    return bytes + ImageData(ioInput, width * height);
}

std::string Extension(Decisions& ioInput) {
    std::vector<std::string> blocks;
    for (unsigned i = ioInput.Below(4); i > 0; --i)
        blocks.push_back(std::string(1 + ioInput.Below(12), static_cast<char>(ioInput.Byte())));
    switch (ioInput.Below(4)) {
    case 0:
        return GIFComment(blocks);
    case 1:
        blocks.insert(blocks.begin(), "NETSCAPE2.0");
        return GIFApplication(blocks);
    default:
        return GIFExtension(ioInput.Byte(), blocks);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize) {
    Decisions input(inData, inSize);
    const unsigned options = input.Byte();
    const unsigned packed = input.Byte() | (input.Below(8) ? 0x80 : 0);
    std::string bytes = GIFHeader(1 + input.Below(40), 1 + input.Below(40), packed) + Table(input, packed);
    for (int i = 0; i < 12 && input.HasMore(); ++i)
        bytes += input.Below(4) ? Frame(input) : Extension(input);
    CheckGIF(bytes + (input.Below(8) ? ";" : ""), options);
    return 0;
}
