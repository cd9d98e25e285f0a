// Builds a Data from many small pieces: they are written one behind the other into a room that doubles when
// it is full. A small result stays within the writer until it is finished.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/ascii.h"
#include "base/html_entities.h"
#include "base/utf8.h"
#include "runtime/Owned.h"

namespace qv {

class DataWriter {
public:
    DataWriter() noexcept = default;
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;

    // All of these throw std::bad_alloc when there is no room.

    void Append(char byte) {
        *Room(1) = byte;
        ++end_;
    }
    void Append(std::string_view bytes) {
        if (bytes.empty()) return;
        std::memcpy(Room(bytes.size()), bytes.data(), bytes.size());
        end_ += bytes.size();
    }
    // Appends the bytes of a number as they lie in memory.
    template <class Value>
    void AppendValue(Value value) {
        std::memcpy(Room(sizeof value), &value, sizeof value);
        end_ += sizeof value;
    }
    // Appends the text as UTF-8; a character that UTF-8 cannot hold becomes "?".
    void AppendUtf8(std::wstring_view text) {
        if (text.size() > kShort) return AppendLongUtf8(text);
        char* const out = Room(Utf8SizeMax(kShort));
        const std::size_t ascii = NarrowAscii(text.data(), text.size(), out);
        EndAt(out + ascii);
        if (ascii < text.size()) AppendLongUtf8(text.substr(ascii));
    }
    // The same, with each character that has an entity replaced.
    void AppendEscaped(std::wstring_view text, HtmlCharSet charSet);

    // For those who write by themselves: where the next `count` bytes go, and up to where they then went.
    [[nodiscard]] char* Room(std::size_t count) {
        if (count > static_cast<std::size_t>(limit_ - end_)) Grow(count);
        return end_;
    }
    void EndAt(char* end) { end_ = end; }

    // The Data, which the caller owns. The writer is used up.
    [[nodiscard]] Owned Finish();

private:
    void AppendLongUtf8(std::wstring_view text);
    [[gnu::noinline]] void Grow(std::size_t count);
    [[nodiscard]] std::size_t Size() const { return size_ - static_cast<std::size_t>(limit_ - end_); }

    static constexpr std::size_t kFirstRoom = 4096;
    static constexpr std::size_t kShort = 64;

    Owned data_;          // null while the first room is enough
    char* end_ = first_;  // of what is written
    char* limit_ = first_ + kFirstRoom;
    std::size_t size_ = kFirstRoom;  // what is written and the room behind it
    char first_[kFirstRoom];
};

}  // namespace qv
