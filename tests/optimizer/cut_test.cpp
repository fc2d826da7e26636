// Streams that are cut by looking ahead, against the plain decoder.

#include "tests/image/images.h"
#include "tests/support/lzwcodec.h"
#include "win/optimizer/codes/pvlookaheadparser.h"

namespace {

/** Long runs, then noise, every third pixel with a choice. */
PvPixelChoices MakeChoices(std::uint32_t inPixelBits, std::uint32_t inCount, std::mt19937& ioRandom) {
    PvPixelChoices choices;
    choices.mPixelBits = inPixelBits;
    while (choices.mPresent.size() < inCount)
        choices.mPresent.insert(choices.mPresent.end(),
                                1 + ioRandom() % (choices.mPresent.size() < inCount / 2 ? 60 : 4),
                                static_cast<std::uint8_t>(ioRandom() % (1U << inPixelBits)));
    choices.mPresent.resize(inCount);
    choices.mOther = choices.mPresent;
    for (std::size_t i = 0; i < inCount; i += 3)
        choices.mOther[i] = static_cast<std::uint8_t>(i / 400 % (1U << inPixelBits));
    return choices;
}

TEST(Cut, EveryDecoderReadsWhatWasSettledInTheBitsForeseen) {
    const TestFolder folder;
    LZWCodec codec(folder / "stream");
    NvLZWStringTable strings;
    PvLookAheadParser parser(strings);
    PvLookAheadParser::Result result;
    std::mt19937 random(1);
    std::size_t clears = 0;
    for (std::uint8_t bits = 2; bits <= 8; ++bits)
        for (const PvLookAheadParser::Caution caution : {PvLookAheadParser::Caution{0, 0}, {2, 2}}) {
            SCOPED_TRACE(testing::Message() << +bits << " bits, " << caution.mPixels);
            const FrameShape shape{200, 300, 200, false};
            const PvPixelChoices choices = MakeChoices(bits, 200 * 300, random);
            parser.Parse(choices, caution, UINT64_MAX, result);
            for (std::size_t i = 0; i < result.mPixels.size(); ++i)
                ASSERT_TRUE(result.mPixels[i] == choices.mPresent[i] ||
                            result.mPixels[i] == choices.mOther[i]);
            const std::string stream = codec.Encode(bits, result.mPixels, shape, &result.mStrings);
            const std::uint64_t bytes = (result.mBits + 7) / 8;
            EXPECT_EQ(stream.size(), 1 + bytes + (bytes + 254) / 255 + 1);
            ASSERT_TRUE(codec.Decode(stream, shape).mPixels == result.mPixels);
            ASSERT_TRUE(ReferenceLZWDecode(stream, shape.PixelCount()).mPixels == result.mPixels);
            for (const NvLZWString& string : result.mStrings)
                clears += string.mClears ? 1 : 0;
        }
    EXPECT_GT(clears, 0U);
}

} // namespace
