#include "formats/data_writer.h"

#include <algorithm>
#include <new>
#include <utility>

#include <QVFoundation/QVData.h>

#include "collections/raw_data.h"

namespace qv {

void DataWriter::AppendLongUtf8(std::wstring_view text) {
    // The longest form of a piece bounds the room that is asked for and not used.
    constexpr std::size_t kPiece = 256;
    while (!text.empty()) {
        const std::size_t count = std::min(text.size(), kPiece);
        char* const out = Room(Utf8SizeMax(count));
        EndAt(out + EncodeUtf8Lossy(text.data(), count, out));
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
    const auto size = static_cast<unsigned long>(Size());
    if (!data_) return Owned{RequireObject(QVDataCreate(first_, size))};
    QVDataSetSize(data_.Get(), size);  // cutting needs no memory
    return std::move(data_);
}

// Doubles what there is; where so much cannot be had, takes what is needed.
void DataWriter::Grow(std::size_t count) {
    const std::size_t size = Size();
    if (data_) {
        QVDataSetSize(data_.Get(), static_cast<unsigned long>(size));
    } else {
        data_.Reset(RequireObject(QVDataCreate(first_, static_cast<unsigned long>(size))));
    }
    for (const std::size_t room : {std::max(count, size), count}) {
        unsigned char* added = ExtendData(data_.Get(), room);
        if (added == nullptr) continue;
        end_ = reinterpret_cast<char*>(added);
        limit_ = end_ + room;
        size_ = size + room;
        return;
    }
    throw std::bad_alloc();
}

}  // namespace qv
