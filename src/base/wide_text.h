// A growable text of wide characters, always allocated and always followed by a terminating 0. Short texts
// lie inside the object, so that a short string object is a single allocation. Every operation that throws
// (std::bad_alloc, std::length_error) leaves the text as it was. Arguments may be views of the text itself.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qv {

class WideText final {
public:
    // With it a string object takes a block of 128 bytes: long enough for most names and words.
    static constexpr size_t kInlineCapacity = 21;

    // Fewer than 2^32 characters, and fewer bytes than pointers can span.
    static constexpr size_t kMaxLength = std::min<uint64_t>(0xFFFFFFFFu, PTRDIFF_MAX / sizeof(wchar_t) - 1);

    WideText() noexcept { Terminate(0); }
    explicit WideText(std::wstring_view text);
    WideText(WideText&& other) noexcept;
    WideText& operator=(WideText&& other) noexcept;
    WideText(const WideText&) = delete;  // a copy is asked for by name: WideText(other.View())
    WideText& operator=(const WideText&) = delete;
    ~WideText() { FreeHeap(); }

    [[nodiscard]] const wchar_t* Data() const noexcept { return data_; }
    [[nodiscard]] size_t Length() const noexcept { return length_; }
    [[nodiscard]] size_t Capacity() const noexcept { return capacity_; }
    [[nodiscard]] std::wstring_view View() const noexcept { return {data_, length_}; }

    // The characters for writing in place; the length stays.
    [[nodiscard]] wchar_t* MutableData() noexcept { return data_; }

    // Makes room for a text of `length` characters in all, exactly; a text that has the room stays.
    void Reserve(size_t length) {
        if (length > capacity_) Reallocate(length);
    }

    // Room for `count` more characters, uninitialised, behind the text; valid until the next change.
    // TakeRoom makes the first characters written there a part of the text.
    [[nodiscard]] wchar_t* AppendRoom(size_t count) {
        if (count > size_t{capacity_} - length_) Grow(count);
        return data_ + length_;
    }
    void TakeRoom(size_t count) noexcept { Terminate(length_ + count); }

    void Append(std::wstring_view text) {
        if (text.size() > size_t{capacity_} - length_) return AppendGrowing(text);
        Copy(data_ + length_, text);
        Terminate(length_ + text.size());
    }

    // Appends the text up to its first 0.
    void AppendUpToZero(std::wstring_view text);

    // Keeps the first `length` characters; `length` must not exceed the length.
    void Truncate(size_t length) noexcept { Terminate(length); }

    // Removes up to `count` characters from `location` on. Beyond the end there is nothing to remove.
    void Erase(size_t location, size_t count) noexcept;

    // Replaces up to `count` characters from `location` on, which must not lie beyond the end.
    void Replace(size_t location, size_t count, std::wstring_view text);

private:
    static void Copy(wchar_t* to, std::wstring_view text) noexcept {
        if (!text.empty()) std::memcpy(to, text.data(), text.size() * sizeof(wchar_t));
    }
    static void Move(wchar_t* to, std::wstring_view text) noexcept {
        if (!text.empty()) std::memmove(to, text.data(), text.size() * sizeof(wchar_t));
    }
    static wchar_t* Allocate(size_t capacity);
    static size_t CheckedSum(size_t length, size_t more);

    [[nodiscard]] bool IsInline() const noexcept { return data_ == inline_; }
    [[nodiscard]] bool Holds(std::wstring_view text) const noexcept;
    [[nodiscard]] size_t GrownCapacity(size_t length) const noexcept;
    void Terminate(size_t length) noexcept {
        length_ = static_cast<uint32_t>(length);
        data_[length] = L'\0';
    }
    void FreeHeap() noexcept;
    void Adopt(wchar_t* data, size_t length, size_t capacity) noexcept;
    void StealFrom(WideText& other) noexcept;
    void Reallocate(size_t capacity);
    void Grow(size_t more);
    void AppendGrowing(std::wstring_view text);

    wchar_t* data_ = inline_;
    uint32_t length_ = 0;
    uint32_t capacity_ = kInlineCapacity;  // characters, without the terminating 0
    wchar_t inline_[kInlineCapacity + 1];
};

}  // namespace qv
