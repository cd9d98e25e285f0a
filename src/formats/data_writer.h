// Builds a Data from many small pieces: they are gathered in a buffer and appended a buffer at a time.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/html_entities.h"
#include "runtime/Owned.h"

namespace qv {

class DataWriter {
public:
    // Throws std::bad_alloc, as every operation does when the Data cannot be made or grown.
    DataWriter();
    DataWriter(const DataWriter&) = delete;
    DataWriter& operator=(const DataWriter&) = delete;

    void Append(char byte) {
        if (used_ == sizeof buffer_) FlushBuffer();
        buffer_[used_++] = byte;
    }
    void Append(std::string_view bytes);
    // Appends the text as UTF-8; a character that UTF-8 cannot hold becomes "?".
    void AppendUtf8(std::wstring_view text);
    // The same, with each character that has an entity replaced.
    void AppendEscaped(std::wstring_view text, HtmlCharSet charSet);

    // The Data, which the caller owns. The writer is used up.
    [[nodiscard]] Owned Finish();

private:
    void FlushBuffer();

    Owned data_;
    std::size_t used_ = 0;
    char buffer_[8192];
};

}  // namespace qv
