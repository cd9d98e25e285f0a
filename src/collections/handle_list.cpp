#include "collections/handle_list.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include "base/block_cache.h"

namespace qv {

struct HandleList::Chunk {
    Chunk* older;
    std::size_t nodeCount;

    [[nodiscard]] Node* Nodes() noexcept { return reinterpret_cast<Node*>(this + 1); }
    [[nodiscard]] static std::size_t SizeFor(std::size_t nodeCount) noexcept {
        return sizeof(Chunk) + nodeCount * sizeof(Node);
    }
};

namespace {

// The first chunk is one of the small blocks; each further one has twice the nodes, up to about a page.
constexpr std::size_t kFirstNodeCount = 7;
constexpr std::size_t kMostNodesInChunk = 168;

}  // namespace

HandleList::Cursor::Cursor(HandleList& list) noexcept
    : list_(list), end_(list.End()), node_(list.Front()), nextCursor_(list.cursors_) {
    if (nextCursor_ != nullptr) nextCursor_->previousCursor_ = this;
    list.cursors_ = this;
}

HandleList::Cursor::~Cursor() {
    (previousCursor_ != nullptr ? previousCursor_->nextCursor_ : list_.cursors_) = nextCursor_;
    if (nextCursor_ != nullptr) nextCursor_->previousCursor_ = previousCursor_;
}

void* HandleList::Cursor::Next() noexcept {
    if (node_ == end_) return nullptr;
    void* handle = node_->handle;
    node_ = node_->next;
    return handle;
}

HandleList::HandleList() : sentinel_(static_cast<Node*>(AllocateBlock(sizeof(Node)))) {
    *sentinel_ = {sentinel_, sentinel_, nullptr};
}

HandleList::~HandleList() {
    FreeChunksBut(nullptr);
    FreeBlock(sentinel_, sizeof(Node));
}

void HandleList::Append(void* handle) {
    Node* node = TakeNode();
    *node = {sentinel_, sentinel_->previous, handle};
    node->previous->next = node;
    sentinel_->previous = node;
}

void* HandleList::Remove(Node* node) noexcept {
    void* handle = node->handle;
    for (Cursor* cursor = cursors_; cursor != nullptr; cursor = cursor->nextCursor_) {
        if (cursor->node_ == node) cursor->node_ = node->next;
    }
    node->previous->next = node->next;
    node->next->previous = node->previous;
    GiveNode(node);
    return handle;
}

HandleList::Node* HandleList::TakeNode() {
    if (freeNodes_ != nullptr) {
        Node* node = freeNodes_;
        freeNodes_ = node->next;
        return node;
    }
    if (freshNodes_ == freshEnd_) AddChunk();
    return freshNodes_++;
}

void HandleList::GiveNode(Node* node) noexcept {
    if (IsEmpty()) return StartAgain();
    node->next = freeNodes_;
    freeNodes_ = node;
}

// An emptied list keeps its newest chunk, the largest, so that neighbours lie side by side once more.
void HandleList::StartAgain() noexcept {
    FreeChunksBut(newestChunk_);
    newestChunk_->older = nullptr;
    freeNodes_ = nullptr;
    freshNodes_ = newestChunk_->Nodes();
    freshEnd_ = freshNodes_ + newestChunk_->nodeCount;
}

void HandleList::AddChunk() {
    const std::size_t nodeCount =
        newestChunk_ == nullptr ? kFirstNodeCount : std::min(2 * newestChunk_->nodeCount, kMostNodesInChunk);
    newestChunk_ = new (AllocateBlock(Chunk::SizeFor(nodeCount))) Chunk{newestChunk_, nodeCount};
    freshNodes_ = newestChunk_->Nodes();
    freshEnd_ = freshNodes_ + nodeCount;
}

void HandleList::FreeChunksBut(const Chunk* kept) noexcept {
    for (Chunk* chunk = newestChunk_; chunk != nullptr;) {
        Chunk* older = chunk->older;
        if (chunk != kept) FreeBlock(chunk, Chunk::SizeFor(chunk->nodeCount));
        chunk = older;
    }
}

}  // namespace qv
