#include "base/wide_text.h"

#include <functional>
#include <stdexcept>

#include "base/block_cache.h"
#include "base/grown_block.h"
#include "base/wide_search.h"

namespace qv {
namespace {

// With the terminating 0 a block of 192 bytes, the largest that the block cache keeps.
constexpr size_t kFirstHeapCapacity = 47;

constexpr size_t SizeOf(size_t capacity) noexcept {
    return (capacity + 1) * sizeof(wchar_t);
}

// Up to here one loop that copies and looks for a 0 takes less time than a call of the C library for each.
constexpr size_t kShort = 32;

// Whether either of two characters is 0; they were read as one word, in whatever order.
constexpr bool HasZero(uint64_t pair) noexcept {
    constexpr uint64_t kLowBits = 0x0000000100000001;
    constexpr uint64_t kHighBits = 0x8000000080000000;
    return ((pair - kLowBits) & ~pair & kHighBits) != 0;
}

// Copies the text up to its first 0; answers how many characters that were.
size_t CopyUpToZero(wchar_t* to, std::wstring_view text) noexcept {
    const wchar_t* from = text.data();
    size_t i = 0;
    for (uint64_t pair; i + 2 <= text.size(); i += 2) {
        std::memcpy(&pair, from + i, sizeof pair);
        if (HasZero(pair)) break;
        std::memcpy(to + i, &pair, sizeof pair);
    }
    for (; i < text.size() && from[i] != L'\0'; ++i)
        to[i] = from[i];
    return i;
}

}  // namespace

WideText::WideText(std::wstring_view text) {
    if (text.size() > kInlineCapacity) {
        data_ = Allocate(text.size());
        capacity_ = static_cast<uint32_t>(text.size());
    }
    Copy(data_, text);
    Terminate(text.size());
}

WideText::WideText(WideText&& other) noexcept {
    StealFrom(other);
}

WideText& WideText::operator=(WideText&& other) noexcept {
    if (this == &other) return *this;
    FreeHeap();
    StealFrom(other);
    return *this;
}

void WideText::AppendUpToZero(std::wstring_view text) {
    if (text.size() > kShort || text.size() > size_t{capacity_} - length_) return Append(UpToZero(text));
    Terminate(length_ + CopyUpToZero(data_ + length_, text));
}

void WideText::Erase(size_t location, size_t count) noexcept {
    if (location >= length_) return;
    const size_t removed = std::min(count, length_ - location);
    Move(data_ + location, View().substr(location + removed));
    Terminate(length_ - removed);
}

void WideText::Replace(size_t location, size_t count, std::wstring_view text) {
    if (location > length_) throw std::out_of_range("WideText::Replace");
    const size_t removed = std::min(count, length_ - location);
    const std::wstring_view head = View().substr(0, location);
    const std::wstring_view tail = View().substr(location + removed);
    const size_t length = CheckedSum(length_ - removed, text.size());
    if (length <= capacity_ && !Holds(text)) {
        Move(data_ + location + text.size(), tail);
        Copy(data_ + location, text);
        return Terminate(length);
    }
    const size_t capacity = length <= capacity_ ? capacity_ : GrownCapacity(length);
    wchar_t* data = Allocate(capacity);
    Copy(data, head);
    Copy(data + location, text);
    Copy(data + location + text.size(), tail);
    Adopt(data, length, capacity);
}

wchar_t* WideText::Allocate(size_t capacity) {
    if (capacity > kMaxLength) throw std::length_error("WideText");
    return static_cast<wchar_t*>(AllocateBlock(SizeOf(capacity)));
}

bool WideText::Holds(std::wstring_view text) const noexcept {
    const std::less_equal<> notAfter;
    return !text.empty() && notAfter(data_, text.data()) && notAfter(text.data(), data_ + length_);
}

size_t WideText::CheckedSum(size_t length, size_t more) {
    if (more > kMaxLength - length) throw std::length_error("WideText");
    return length + more;
}

// Doubling, so that appending costs a constant time for each character.
size_t WideText::GrownCapacity(size_t length) const noexcept {
    const size_t doubled = IsInline() ? kFirstHeapCapacity : 2 * size_t{capacity_} + 1;
    return std::min(kMaxLength, std::max(length, doubled));
}

void WideText::FreeHeap() noexcept {
    if (!IsInline()) FreeBlock(data_, SizeOf(capacity_));
}

void WideText::Adopt(wchar_t* data, size_t length, size_t capacity) noexcept {
    FreeHeap();
    data_ = data;
    capacity_ = static_cast<uint32_t>(capacity);
    Terminate(length);
}

void WideText::StealFrom(WideText& other) noexcept {
    if (other.IsInline()) {
        data_ = inline_;
        Copy(inline_, other.View());
    } else {
        data_ = other.data_;
    }
    capacity_ = other.capacity_;
    Terminate(other.length_);
    other.data_ = other.inline_;
    other.capacity_ = kInlineCapacity;
    other.Terminate(0);
}

void WideText::Reallocate(size_t capacity) {
    wchar_t* data = Allocate(capacity);
    CopyToGrownBlock(data, data_, length_ * sizeof(wchar_t));
    Adopt(data, length_, capacity);
}

void WideText::Grow(size_t more) {
    Reallocate(GrownCapacity(CheckedSum(length_, more)));
}

// The old text is freed last, since `text` may lie in it.
void WideText::AppendGrowing(std::wstring_view text) {
    const size_t length = CheckedSum(length_, text.size());
    const size_t capacity = GrownCapacity(length);
    wchar_t* data = Allocate(capacity);
    CopyToGrownBlock(data, data_, length_ * sizeof(wchar_t));
    Copy(data + length_, text);
    Adopt(data, length, capacity);
}

}  // namespace qv
