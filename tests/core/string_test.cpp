// Strings and lists: both views of a string, and what their routines do at the ends.

#include "nvcode2/base/nvstring.h"

#include "nvcode2/base/nvlist.h"
#include "nvcode2/base/nvpascalstring.h"
#include "nvcode2/base/nvstringresource.h"
#include "tests/support/test.h"

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
    for (const std::size_t length : {0u, 254u, 255u, 256u, 300u}) {
        const std::string text(length, 'x');
        NvString string(text.c_str());
        EXPECT_EQ(TextOf(string), text);
        EXPECT_EQ(TextOf(string += string), text + text);
        unsigned char buffer[256];
        NvCopyToPascalString(text.c_str(), buffer);
        EXPECT_EQ(TextOf(NvString(buffer)), text.substr(0, 255));
    }
    for (const std::int32_t number : {-5, 0, 2147483647, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(TextOf(NvString(number)), std::to_string(number));
    const NvStringTable table({{1, "one"}, {300, std::string(300, 'x')}});
    EXPECT_EQ(TextOf(NvString(&table, 300)), std::string(300, 'x'));
    EXPECT_EQ(CodeOf([&] { NvString(&table, 2); }), 35u);
}

/** What inChange leaves of a text. */
template <typename Change>
std::string After(const char* inText, Change inChange) {
    NvString string(inText);
    inChange(string);
    return TextOf(string);
}

TEST(StringTest, ChangesFindsAndComparesText) {
    EXPECT_EQ(After("aZ@[`{z\xe4", [](NvString& s) { s.ToUpper(); }), "AZ@[`{Z\xe4");
    EXPECT_EQ(After("aZ@[`{z\xe4", [](NvString& s) { s.ToLower(); }), "az@[`{z\xe4");
    EXPECT_EQ(After("  a b ", [](NvString& s) { s.TrimLeft(); }), "a b ");
    EXPECT_EQ(After("  a b ", [](NvString& s) { s.TrimRight(); }), "  a b");
    EXPECT_EQ(After("abc", [](NvString& s) { s.SetLength(2); }), "ab");
    EXPECT_EQ(TextOf(NvString("abcabc").SubString(1, 3)), "bca");
    std::uint32_t index = 99;
    EXPECT_TRUE(NvString("abcabc").Find(2, 'b', index));
    EXPECT_EQ(index, 4u);
    EXPECT_FALSE(NvString("abcabc").Find(6, 'c', index));
    EXPECT_LT(NvString("ab").Compare(NvString("abc")), 0);
    EXPECT_GT(NvString("\x80").Compare(NvString("\x7f")), 0) << "as unsigned bytes";
}

TEST(ListTest, InsertsAndRemovesAtEveryPlace) {
    char letters[] = "abcd";
    const auto textOf = [](const NvList& inList) {
        std::string text, backward;
        for (const NvList::Node* node = inList.GetFirst(); node; node = node->GetNext())
            text += *static_cast<const char*>(node->GetElement());
        for (const NvList::Node* node = inList.GetLast(); node; node = node->GetPrevious())
            backward += *static_cast<const char*>(node->GetElement());
        EXPECT_EQ(text, std::string(backward.rbegin(), backward.rend()));
        return text;
    };
    NvList list;
    NvList::Node* c = list.Insert(0, letters + 2);
    list.InsertBefore(c, letters);
    list.InsertAfter(c, letters + 3);
    list.Insert(1, letters + 1);
    list.Append(letters);
    EXPECT_EQ(textOf(list), "abcda");
    list.Remove(2u);
    list.Remove(list.GetLast());
    list.Remove(0);
    EXPECT_EQ(textOf(list), "bd");
    list.RemoveAll();
    list.Append(letters);
    EXPECT_EQ(textOf(list), "a");
}

} // namespace
