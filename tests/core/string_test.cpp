#include "nvcode2/base/nvstring.h"

#include <algorithm>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "nvcode2/base/nverrorcode.h"
#include "nvcode2/base/nvpascalstring.h"
#include "nvcode2/base/nvstringresource.h"
#include "tests/support/codeof.h"

namespace {

/** The text, with both views of it checked. */
std::string TextOf(const NvString& inString) {
    const std::uint32_t length = inString.GetLength();
    const unsigned char* const buffer = inString.GetBufferPtr();
    EXPECT_EQ(static_cast<const void*>(inString.GetTextPtr()), buffer + 1);
    EXPECT_EQ(buffer[0], std::min(length, 255u));
    EXPECT_EQ(buffer[length + 1], '\0');
    return std::string(inString.GetTextPtr(), length);
}

template <typename Number>
std::string Decimal(Number inNumber) {
    char text[] = "############";
    const std::uint32_t count = NvString::NumberToText(inNumber, text);
    EXPECT_EQ(text[count], '#') << "writes nothing after the number";
    EXPECT_EQ(TextOf(NvString(inNumber)), std::string(text, count));
    return std::string(text, count);
}

TEST(StringTest, BothViewsHoldForEveryLength) {
    EXPECT_EQ(TextOf(NvString()), "");
    EXPECT_EQ(TextOf(NvString(static_cast<const char*>(nullptr), 0)), "");
    for (const std::size_t length : {0u, 1u, 254u, 255u, 256u, 300u}) {
        const std::string text(length, 'x');
        EXPECT_EQ(TextOf(NvString(text.c_str())), text);
    }
    EXPECT_EQ(TextOf(NvString("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(TextOf(NvString(reinterpret_cast<const unsigned char*>("\3abcdef"))), "abc");
}

TEST(StringTest, ResizesAndJoins) {
    NvString text("abc");
    text.SetLength(5);
    EXPECT_EQ(TextOf(text), std::string("abc\0\0", 5));
    text.SetLength(2);
    EXPECT_EQ(TextOf(text), "ab");
    text += NvString("cd");
    text += text;
    EXPECT_EQ(TextOf(text), "abcdabcd");
    EXPECT_EQ(TextOf(text + NvString("!")), "abcdabcd!");

    NvString copy = text;
    copy.SetLength(0);
    EXPECT_EQ(TextOf(text), "abcdabcd") << "a copy has a buffer of its own";
    copy = text;
    const NvString& self = copy;
    copy = self;
    EXPECT_EQ(TextOf(copy), "abcdabcd");
}

TEST(StringTest, ComparesBytesThenLengths) {
    const struct {
        const char* left;
        const char* right;
        int sign;
    } rows[] = {{"abc", "abd", -1}, {"abc", "ab", 1}, {"", "", 0},        {"", "a", -1},
                {"abc", "abc", 0},  {"b", "abc", 1},  {"\x80", "\x7f", 1}};
    for (const auto& row : rows) {
        const NvString left(row.left);
        const NvString right(row.right);
        const std::int32_t result = left.Compare(right);
        EXPECT_EQ((result > 0) - (result < 0), row.sign) << row.left << " and " << row.right;
        EXPECT_EQ(left < right, row.sign < 0);
        EXPECT_EQ(left >= right, row.sign >= 0);
        EXPECT_EQ(left != right, row.sign != 0);
    }
    EXPECT_EQ(NvString("abX").CompareN(NvString("abY"), 2), 0);
    EXPECT_LT(NvString("abX").CompareN(NvString("abY"), 3), 0);
}

TEST(StringTest, ChangesTextInPlace) {
    NvString text("aZ@[`{z\xe4");
    text.ToUpper();
    EXPECT_EQ(TextOf(text), "AZ@[`{Z\xe4");
    text.ToLower();
    EXPECT_EQ(TextOf(text), "az@[`{z\xe4");
    text.Fill(2, '-');
    EXPECT_EQ(TextOf(text), "--@[`{z\xe4");
    text.Fill('+');
    EXPECT_EQ(TextOf(text), "++++++++");
}

TEST(StringTest, TrimsSpacesOnly) {
    const struct {
        const char* text;
        const char* left;
        const char* right;
        bool isBlank;
    } rows[] = {{"", "", "", true},
                {"   ", "", "", true},
                {"  a b ", "a b ", "  a b", false},
                {"\t ", "\t ", "\t", false},
                {"ab", "ab", "ab", false}};
    for (const auto& row : rows) {
        NvString left(row.text);
        NvString right(row.text);
        EXPECT_EQ(left.IsBlank(), row.isBlank) << '"' << row.text << '"';
        EXPECT_EQ(left.HasNonBlank(), !row.isBlank);
        left.TrimLeft();
        right.TrimRight();
        EXPECT_EQ(TextOf(left), row.left);
        EXPECT_EQ(TextOf(right), row.right);
    }
}

TEST(StringTest, FindsInBothDirections) {
    const NvString text("abcabc");
    const struct {
        bool isReverse;
        std::int32_t from;
        char sought;
        std::uint32_t found; // 99: nowhere
    } rows[] = {{false, 0, 'b', 1},  {false, 2, 'b', 4},   {false, 5, 'b', 99},
                {false, 6, 'c', 99}, {false, -1, 'c', 99}, {true, 5, 'a', 3},
                {true, 2, 'a', 0},   {true, 1, 'c', 99},   {true, -1, 'a', 99}};
    for (const auto& row : rows) {
        std::uint32_t index = 99;
        EXPECT_EQ(row.isReverse ? text.FindReverse(row.from, row.sought, index)
                                : text.Find(static_cast<std::uint32_t>(row.from), row.sought, index),
                  row.found != 99);
        EXPECT_EQ(index, row.found) << row.sought << " from " << row.from;
    }
    EXPECT_EQ(TextOf(text.SubString(1, 3)), "bca");
    EXPECT_EQ(TextOf(text.SubString(5, 5)), "c");
}

TEST(StringTest, WritesNumbersInDecimal) {
    for (const std::uint32_t number : {0u, 7u, 100u, 1000000000u, 4294967295u})
        EXPECT_EQ(Decimal(number), std::to_string(number));
    for (const std::int32_t number : {0, -5, 2147483647, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(Decimal(number), std::to_string(number));
}

/** A module whose answers a test sets. */
class FakeModule : public NvStringResources {
public:
    NvStringBlock FindBlock(std::uint32_t) const override { return mBlock; }
    std::uint32_t LoadText(std::uint32_t, char* outText, std::uint32_t inSize) const override {
        EXPECT_EQ(inSize, mBlock.mSize);
        mText.copy(outText, inSize - 1);
        return static_cast<std::uint32_t>(mText.size());
    }

    NvStringBlock mBlock;
    std::string mText;
};

TEST(StringTest, LoadsResources) {
    const NvStringTable table({{1, "one"}, {300, std::string(300, 'x')}, {4, ""}});
    EXPECT_EQ(TextOf(NvString(&table, 1)), "one");
    EXPECT_EQ(TextOf(NvString(&table, 300)), std::string(300, 'x'));
    EXPECT_EQ(CodeOf([&] { NvString(&table, 2); }), 35u);
    EXPECT_EQ(CodeOf([&] { NvString(&table, 4); }), 35u);
    EXPECT_EQ(CodeOf([&] { NvString(static_cast<const NvStringResources*>(nullptr), 1); }), 1u);

    FakeModule module;
    module.mBlock = {true, 400, 0}; // the block holds more than the one string
    module.mText = "short";
    EXPECT_EQ(TextOf(NvString(&module, 1)), "short");

    const struct {
        NvStringBlock block;
        std::uint32_t code;
        std::int32_t systemError;
    } rows[] = {
        {{false, 0, 8}, 2, 8}, {{false, 0, 1814}, 35, 1814}, {{true, 0, 8}, 35, 8}, {{true, 10, 5}, 35, 0}};
    module.mText.clear();
    for (const auto& row : rows) {
        module.mBlock = row.block;
        try {
            const NvString text(&module, 1);
            ADD_FAILURE() << "loaded";
        } catch (const NvErrorCode& error) {
            EXPECT_EQ(error.GetCode(), row.code);
            EXPECT_EQ(error.GetSystemError(), row.systemError);
        }
    }
}

TEST(PascalStringTest, AppendsCopiesAndUpperCases) {
    unsigned char buffer[256];
    NvCopyToPascalString("aZ\xe4", buffer);
    NvAppendToPascalString(buffer, 'q');
    NvPascalStringToUpper(buffer);
    EXPECT_EQ(TextOf(NvString(buffer)), "AZ\xe4Q");

    char text[] = "a1zZ{";
    NvCStringToUpper(text);
    EXPECT_STREQ(text, "A1ZZ{");

    const std::string longText(300, 'l');
    NvCopyToPascalString(longText.c_str(), buffer);
    NvPascalStringToUpper(buffer);
    EXPECT_EQ(TextOf(NvString(buffer)), std::string(255, 'L'));
    EXPECT_DEATH(NvAppendToPascalString(buffer, 'x'), "\"\\*ioPString < 255\"");
}

TEST(StringDeathTest, ChecksItsPreconditions) {
    const NvString text("abc");
    std::uint32_t index;
    EXPECT_DEATH(NvString(static_cast<const char*>(nullptr)), "\"inCString\"");
    EXPECT_DEATH(NvString(static_cast<const char*>(nullptr), 1), "\"inTextPtr \\|\\| \\(inLength == 0\\)\"");
    EXPECT_DEATH(text.FindReverse(3, 'a', index), "\"index < \\(NvInt32\\)mLength\"");
    EXPECT_DEATH(text.CompareN(NvString("ab"), 3), "\"mLength >= inNChars && inString.mLength >= inNChars\"");
    EXPECT_DEATH(NvString::NumberToText(5u, nullptr), "\"outBufferPtr\"");
    EXPECT_DEATH(text.SubString(1, 3), "Assertion failed");
}

} // namespace
