#include "formats/data_writer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include <QVFoundation/QVData.h>

#include "base/utf8.h"

namespace qv {

DataWriter::DataWriter() : data_(RequireObject(QVDataCreate(nullptr, 0))) {}

void DataWriter::Append(std::string_view bytes) {
    while (!bytes.empty()) {
        if (used_ == sizeof buffer_) FlushBuffer();
        const std::size_t count = std::min(bytes.size(), sizeof buffer_ - used_);
        std::memcpy(buffer_ + used_, bytes.data(), count);
        used_ += count;
        bytes.remove_prefix(count);
    }
}

void DataWriter::AppendUtf8(std::wstring_view text) {
    constexpr std::size_t kLongest = Utf8SizeMax(1);
    while (!text.empty()) {
        if (sizeof buffer_ - used_ < kLongest) FlushBuffer();
        const std::size_t count = std::min(text.size(), (sizeof buffer_ - used_) / kLongest);
        used_ += EncodeUtf8Lossy(text.data(), count, buffer_ + used_);
        text.remove_prefix(count);
    }
}

void DataWriter::AppendEscaped(std::wstring_view text, HtmlCharSet charSet) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = FindHtmlCharacter(text, start, charSet);
        AppendUtf8(text.substr(start, end - start));
        if (end < text.size()) AppendUtf8(FindHtmlEntity(text[end], charSet));
        start = end + 1;
    }
}

Owned DataWriter::Finish() {
    FlushBuffer();
    return std::move(data_);
}

void DataWriter::FlushBuffer() {
    if (used_ > 0 && QVDataAppendBuffer(data_.Get(), buffer_, static_cast<unsigned long>(used_)) == 0) {
        throw std::bad_alloc();
    }
    used_ = 0;
}

}  // namespace qv
