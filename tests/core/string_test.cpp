// Strings in both of their views, and the few routines on them, a row for each.

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

TEST(StringTest, BothViewsHoldForEveryLength) {
    for (const std::size_t length : {0u, 1u, 254u, 255u, 256u, 300u}) {
        const std::string text(length, 'x');
        NvString string(text.c_str());
        EXPECT_EQ(TextOf(string), text);
        EXPECT_EQ(TextOf(string += string), text + text);
    }
    EXPECT_EQ(TextOf(NvString("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_DEATH(NvString(static_cast<const char*>(nullptr)), "\"inCString\"");
}

/** What inChange leaves of a text. */
template <typename Change>
std::string After(const char* inText, Change inChange) {
    NvString string(inText);
    inChange(string);
    return TextOf(string);
}

TEST(StringTest, ChangesAndFindsText) {
    EXPECT_EQ(After("aZ@[`{z\xe4", [](NvString& s) { s.ToUpper(); }), "AZ@[`{Z\xe4");
    EXPECT_EQ(After("aZ@[`{z\xe4", [](NvString& s) { s.ToLower(); }), "az@[`{z\xe4");
    EXPECT_EQ(After("abc", [](NvString& s) { s.Fill(2, '-'); }), "--c");
    EXPECT_EQ(After("  a b ", [](NvString& s) { s.TrimLeft(); }), "a b ");
    EXPECT_EQ(After("  a b ", [](NvString& s) { s.TrimRight(); }), "  a b");
    EXPECT_EQ(After("abc", [](NvString& s) { s.SetLength(2); }), "ab");
    EXPECT_EQ(TextOf(NvString("abcabc").SubString(1, 3)), "bca");
    EXPECT_TRUE(NvString("   ").IsBlank());
    std::uint32_t index = 99;
    EXPECT_TRUE(NvString("abcabc").Find(2, 'b', index));
    EXPECT_EQ(index, 4u);
    EXPECT_TRUE(NvString("abcabc").FindReverse(2, 'a', index));
    EXPECT_EQ(index, 0u);
    EXPECT_FALSE(NvString("abcabc").Find(6, 'c', index));
}

TEST(StringTest, ComparesBytesThenLengths) {
    const struct {
        const char* left;
        const char* right;
        int sign;
    } rows[] = {{"abc", "abd", -1}, {"abc", "ab", 1}, {"", "", 0}, {"b", "abc", 1}, {"\x80", "\x7f", 1}};
    for (const auto& row : rows) {
        const NvString left(row.left);
        const NvString right(row.right);
        const std::int32_t result = left.Compare(right);
        EXPECT_EQ((result > 0) - (result < 0), row.sign) << row.left << " and " << row.right;
        EXPECT_EQ(left < right, row.sign < 0);
    }
    EXPECT_EQ(NvString("abX").CompareN(NvString("abY"), 2), 0);
}

TEST(StringTest, WritesNumbersInDecimal) {
    for (const std::uint32_t number : {0u, 100u, 4294967295u})
        EXPECT_EQ(TextOf(NvString(number)), std::to_string(number));
    for (const std::int32_t number : {-5, 2147483647, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(TextOf(NvString(number)), std::to_string(number));
}

TEST(StringTest, LoadsResources) {
    const NvStringTable table({{1, "one"}, {300, std::string(300, 'x')}, {4, ""}});
    EXPECT_EQ(TextOf(NvString(&table, 1)), "one");
    EXPECT_EQ(TextOf(NvString(&table, 300)), std::string(300, 'x'));
    EXPECT_EQ(CodeOf([&] { NvString(&table, 2); }), 35u);
    EXPECT_EQ(CodeOf([&] { NvString(&table, 4); }), 35u);
}

TEST(StringTest, PascalStringsEndAt255) {
    unsigned char buffer[256];
    NvCopyToPascalString("aZ\xe4", buffer);
    NvAppendToPascalString(buffer, 'q');
    NvPascalStringToUpper(buffer);
    EXPECT_EQ(TextOf(NvString(buffer)), "AZ\xe4Q");
    NvCopyToPascalString(std::string(300, 'l').c_str(), buffer);
    EXPECT_EQ(TextOf(NvString(buffer)), std::string(255, 'l'));
}

} // namespace
