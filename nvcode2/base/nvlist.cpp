#include "nvcode2/base/nvlist.h"

#include <utility>

#include "nvcode2/base/nvallocate.h"
#include "nvcode2/base/nvassert.h"

NvList::~NvList() {
    // One by one: the chain of owners would otherwise be destroyed recursively, as deep as the list is long.
    RemoveAll();
}

std::uint32_t NvList::GetCount() const {
    std::uint32_t count = 0;
    for (const Node* node = GetFirst(); node; node = node->GetNext())
        ++count;
    return count;
}

NvList::Node* NvList::GetNode(std::uint32_t inIndex) const {
    Node* temp = GetFirst();
    for (std::uint32_t i = 0; i < inIndex && temp; ++i)
        temp = temp->GetNext();
    NvAssert(temp);
    return temp;
}

NvList::Node* NvList::InsertAfter(Node* inNode, void* inElement) {
    NvAssertText(inNode, "inElement");
    return Link(inNode->mNext, inNode, inElement);
}

NvList::Node* NvList::InsertBefore(Node* inNode, void* inElement) {
    NvAssertText(inNode, "inElement");
    return Link(OwnerOf(inNode), inNode->mPrevious, inElement);
}

NvList::Node* NvList::Append(void* inElement) {
    return mLast ? InsertAfter(mLast, inElement) : Link(mFirst, nullptr, inElement);
}

NvList::Node* NvList::Insert(std::uint32_t inIndex, void* inElement) {
    return inIndex == 0 ? Link(mFirst, nullptr, inElement) : InsertAfter(GetNode(inIndex - 1), inElement);
}

void NvList::Remove(std::uint32_t inIndex) {
    Remove(GetNode(inIndex));
}

void NvList::Remove(Node* inNode) {
    NvAssert(inNode);
    std::unique_ptr<Node>& owner = OwnerOf(inNode);
    const std::unique_ptr<Node> removed = std::exchange(owner, std::move(inNode->mNext));
    (owner ? owner->mPrevious : mLast) = removed->mPrevious;
}

void NvList::RemoveAll() {
    while (mFirst)
        Remove(mFirst.get());
}

/** The pointer that owns inNode: in the node before it, or in the list. */
std::unique_ptr<NvList::Node>& NvList::OwnerOf(const Node* inNode) {
    return inNode->mPrevious ? inNode->mPrevious->mNext : mFirst;
}

/** Puts a new node between inPrevious and what ioOwner, the owner at that place, held so far. */
NvList::Node* NvList::Link(std::unique_ptr<Node>& ioOwner, Node* inPrevious, void* inElement) {
    std::unique_ptr<Node> node = NvAllocate([] { return std::make_unique<Node>(); });
    node->mPrevious = inPrevious;
    node->mNext = std::move(ioOwner);
    node->mElement = inElement;
    (node->mNext ? node->mNext->mPrevious : mLast) = node.get();
    ioOwner = std::move(node);
    return ioOwner.get();
}
