#include "nvcode2/base/nvlist.h"

#include <string>

#include <gtest/gtest.h>

namespace {

char gLetters[] = "abcdefgh";

void* Letter(char inLetter) {
    return gLetters + (inLetter - 'a');
}

/** The list's letters, checked to be the same walked backward. */
std::string TextOf(const NvList& inList) {
    std::string text;
    for (const NvList::Node* node = inList.GetFirst(); node; node = node->GetNext())
        text += *static_cast<const char*>(node->GetElement());
    std::string backward;
    for (const NvList::Node* node = inList.GetLast(); node; node = node->GetPrevious())
        backward += *static_cast<const char*>(node->GetElement());
    EXPECT_EQ(text, std::string(backward.rbegin(), backward.rend()));
    EXPECT_EQ(inList.GetCount(), text.size());
    return text;
}

TEST(ListTest, InsertsAndRemovesAtEveryPlace) {
    NvList list;
    EXPECT_EQ(TextOf(list), "");
    NvList::Node* c = list.Insert(0, Letter('c'));
    list.InsertBefore(c, Letter('a'));
    list.InsertBefore(c, Letter('b'));
    list.InsertAfter(c, Letter('e'));
    list.InsertAfter(c, Letter('d'));
    list.Append(Letter('f'));
    list.Insert(0, Letter('h'));
    list.Insert(1, Letter('g'));
    EXPECT_EQ(TextOf(list), "hgabcdef");
    EXPECT_EQ(list.GetNode(4), c);

    list.Remove(2u);
    list.Remove(list.GetLast());
    list.Remove(list.GetFirst());
    EXPECT_EQ(TextOf(list), "gbcde");
    list.RemoveAll();
    list.Append(Letter('a'));
    list.Remove(0u);
    EXPECT_EQ(TextOf(list), "");
    EXPECT_DEATH(list.GetNode(0), "\"temp\"");
}

} // namespace
