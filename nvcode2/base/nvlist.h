#pragma once

#include <cstdint>
#include <memory>

/** A doubly linked list of untyped element pointers. It owns its nodes, never the elements.
 *
 *  Indices count from 0. Reaching one takes a walk from the first node, and so does counting: loops over all
 *  elements walk the nodes instead (GetFirst, then Node::GetNext). Whatever adds a node raises 2 when memory
 *  is out, and then leaves the list as it was.
 *
 *  The program appends, walks and removes; inserting, indices and the way back make the list complete. */
class NvList {
public:
    /** One place in the list; valid until it is removed. */
    class Node {
    public:
        /** The neighbours, nullptr at the ends. */
        Node* GetPrevious() const { return mPrevious; }
        Node* GetNext() const { return mNext.get(); }

        void* GetElement() const { return mElement; }

    private:
        friend class NvList;

        Node* mPrevious = nullptr;
        std::unique_ptr<Node> mNext;
        void* mElement = nullptr;
    };

    NvList() = default;
    NvList(const NvList&) = delete;
    NvList& operator=(const NvList&) = delete;
    ~NvList();

    /** nullptr in an empty list. */
    Node* GetFirst() const { return mFirst.get(); }
    Node* GetLast() const { return mLast; }

    /** Linear in the count. */
    std::uint32_t GetCount() const;

    /** Precondition: inIndex < GetCount(). Linear in inIndex. */
    Node* GetNode(std::uint32_t inIndex) const;

    /** Adds a node for inElement, any pointer, beside inNode, which is not null and of this list.
     *  @return  the new node */
    Node* InsertAfter(Node* inNode, void* inElement);
    Node* InsertBefore(Node* inNode, void* inElement);

    /** Adds a node for inElement at the end and returns it. */
    Node* Append(void* inElement);

    /** Adds a node for inElement that gets index inIndex, and returns it.
     *  Precondition: inIndex <= GetCount(). */
    Node* Insert(std::uint32_t inIndex, void* inElement);

    /** Removes a node and leaves its element alone. Precondition: inIndex < GetCount(). The signed form lets
     *  a literal 0 be an index. */
    void Remove(std::uint32_t inIndex);
    void Remove(std::int32_t inIndex) { Remove(static_cast<std::uint32_t>(inIndex)); }

    /** The same for a node of this list, not null. */
    void Remove(Node* inNode);

    void RemoveAll();

private:
    std::unique_ptr<Node>& OwnerOf(const Node* inNode);
    Node* Link(std::unique_ptr<Node>& ioOwner, Node* inPrevious, void* inElement);

    std::unique_ptr<Node> mFirst; // each node owns the next one
    Node* mLast = nullptr;
};
