// The doubly linked list under the linked list object: handles, as plain pointers, in nodes around a
// sentinel. It owns its nodes and knows nothing of what the handles stand for.
#pragma once

#include <cstddef>

namespace qv {

class HandleList {
public:
    struct Node {
        Node* next;
        Node* previous;
        void* handle;
    };

    // A place in the list that stays valid while the list changes: when its node goes, it moves to the next
    // one. At the end it stays at the end until it is reset, whatever is added. It must not outlive the list.
    class Cursor {
    public:
        explicit Cursor(HandleList& list) noexcept;
        Cursor(const Cursor&) = delete;
        Cursor& operator=(const Cursor&) = delete;
        ~Cursor();

        // The handle at the place, which moves on; null at the end.
        void* Next() noexcept;
        void Reset() noexcept { node_ = list_.Front(); }

    private:
        friend class HandleList;
        HandleList& list_;
        const Node* end_;
        Node* node_;
        Cursor* nextCursor_;
        Cursor* previousCursor_ = nullptr;
    };

    // Throws std::bad_alloc.
    HandleList();
    HandleList(const HandleList&) = delete;
    HandleList& operator=(const HandleList&) = delete;
    ~HandleList();

    // Walking: from Front() by `next`, or from Back() by `previous`, to End().
    [[nodiscard]] Node* Front() const noexcept { return sentinel_->next; }
    [[nodiscard]] Node* Back() const noexcept { return sentinel_->previous; }
    [[nodiscard]] const Node* End() const noexcept { return sentinel_; }
    [[nodiscard]] bool IsEmpty() const noexcept { return Front() == sentinel_; }

    // Adds at the back. Throws std::bad_alloc and then changes nothing.
    void Append(void* handle);

    // Takes a node of the list out and answers its handle.
    void* Remove(Node* node) noexcept;

private:
    struct Chunk;

    [[nodiscard]] Node* TakeNode();
    void GiveNode(Node* node) noexcept;
    // Both are rare, and kept out of the way of what is not.
    [[gnu::noinline]] void AddChunk();
    [[gnu::noinline]] void StartAgain() noexcept;
    void FreeChunksBut(const Chunk* kept) noexcept;

    Node* sentinel_ = nullptr;
    // Nodes come from chunks, so that neighbours in the list lie side by side; free nodes are linked by
    // `next`.
    Node* freeNodes_ = nullptr;
    Node* freshNodes_ = nullptr;  // the part of the newest chunk that was never used
    Node* freshEnd_ = nullptr;
    Chunk* newestChunk_ = nullptr;
    Cursor* cursors_ = nullptr;
};

}  // namespace qv
