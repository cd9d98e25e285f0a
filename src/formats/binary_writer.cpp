#include "formats/binary_writer.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "base/utf8.h"
#include "collections/dictionary_entries.h"
#include "collections/number_bytes.h"
#include "formats/binary_tags.h"
#include "formats/container_path.h"
#include "formats/data_writer.h"

namespace qv {
namespace {

// Where the bytes go. Both kinds take numbers, pieces of bytes and text, and answer 0 or a result code.
class MemorySink {
public:
    template <class Value>
    int PutValue(Value value) {
        out_.AppendValue(value);
        return QVNoErr;
    }
    int Put(std::string_view bytes) {
        out_.Append(bytes);
        return QVNoErr;
    }
    int PutNumber(BinaryTag tag, const NumberBytes& value) {
        char* at = out_.Room(1 + sizeof value.bits);
        *at = static_cast<char>(tag);
        std::memcpy(at + 1, &value.bits, sizeof value.bits);
        out_.EndAt(at + 1 + value.size);
        return QVNoErr;
    }
    int PutText(std::wstring_view text) {
        out_.AppendUtf8(text);
        return QVNoErr;
    }
    [[nodiscard]] Owned Finish() { return out_.Finish(); }

private:
    DataWriter out_;
};

// Each piece is a put of its own: streams over Data show the difference.
class StreamSink {
public:
    explicit StreamSink(void* stream) : stream_(stream) {}

    template <class Value>
    int PutValue(Value value) {
        return Put({reinterpret_cast<const char*>(&value), sizeof value});
    }
    int Put(std::string_view bytes) {
        return QVStreamPutBytes(stream_, bytes.data(), static_cast<unsigned long>(bytes.size()), nullptr, 1);
    }
    int PutNumber(BinaryTag tag, const NumberBytes& value) {
        const int result = PutValue(tag);
        return result != QVNoErr ? result : Put({reinterpret_cast<const char*>(&value.bits), value.size});
    }
    int PutText(std::wstring_view text) {
        if (text.empty()) return QVNoErr;
        bytes_.resize(Utf8SizeMax(text.size()));
        return Put({bytes_.data(), EncodeUtf8Lossy(text.data(), text.size(), bytes_.data())});
    }

private:
    void* stream_;
    std::string bytes_;
};

template <class Sink>
class Writer {
public:
    explicit Writer(Sink& sink) : sink_(sink) {}

    int Write(void* root) {
        int result = WriteObject(root);
        while (result == QVNoErr && !open_.empty())
            result = WriteNext(open_.back());
        return result;
    }

private:
    // A container whose objects are being written. They are kept on a stack of our own, so that depth costs
    // none of the thread's.
    struct OpenContainer {
        void* container;
        bool isDictionary;
        unsigned long count;
        unsigned long next;
    };

    int PutTag(BinaryTag tag) { return sink_.PutValue(tag); }

    template <class Value>
    int PutTagged(BinaryTag tag, Value value) {
        const int result = PutTag(tag);
        return result != QVNoErr ? result : sink_.PutValue(value);
    }

    int WriteNext(OpenContainer& top) {
        if (top.next == top.count) {
            open_.pop_back();
            path_.Leave();
            return PutTag(BinaryTag::kEnd);
        }
        const unsigned long index = top.next++;
        if (!top.isDictionary) return WriteObject(QVArrayGetObjectAtIndex(top.container, index));
        const DictionaryEntry entry = GetDictionaryEntry(top.container, index);
        const int result = WriteText({entry.key, entry.keyLength});
        return result != QVNoErr ? result : WriteObject(entry.value);
    }

    int WriteObject(void* object) {
        switch (QVGetTypeID(object)) {
            case QVTypeIDNumber:
                return WriteNumber(object);
            case QVTypeIDString:
                return WriteText({QVStringGetBuffer(object), QVStringGetLength(object)});
            case QVTypeIDData:
                return WriteData(object);
            case QVTypeIDArray:
                return Open(BinaryTag::kArray, {object, false, QVArrayGetCount(object), 0});
            case QVTypeIDDictionary:
                return Open(BinaryTag::kDictionary,
                            {object, true, static_cast<unsigned long>(QVDictionaryCount(object)), 0});
            case QVTypeIDDate:
                return WriteDate(object);
            default:
                return QVErrParam;
        }
    }

    int Open(BinaryTag tag, const OpenContainer& container) {
        if (!path_.Enter(container.container)) return QVErrParam;
        open_.push_back(container);
        return PutTag(tag);
    }

    int WriteNumber(void* number) {
        const NumberBytes value = GetNumberBytes(number);
        if (value.nativeType == QVNumberTypeBool)
            return PutTag(value.bits != 0 ? BinaryTag::kTrue : BinaryTag::kFalse);
        return sink_.PutNumber(TagOfNumber(value.nativeType), value);
    }

    int WriteText(std::wstring_view text) {
        int result = PutTag(BinaryTag::kString);
        if (result == QVNoErr) result = sink_.PutText(text);
        return result != QVNoErr ? result : sink_.PutValue('\0');
    }

    int WriteData(void* data) {
        const auto size = static_cast<std::uint32_t>(QVDataGetSize(data));
        const int result = PutTagged(BinaryTag::kData, size);
        if (result != QVNoErr || size == 0) return result;
        const void* bytes = QVDataGetImutableBuffer(data);
        if (bytes == nullptr) return QVErrParam;
        return sink_.Put({static_cast<const char*>(bytes), size});
    }

    // The offset is split into whole hours and what remains of it in seconds, whose low byte alone is kept.
    // The reader takes that byte for minutes; the format leaves the two unmatched.
    int WriteDate(void* date) {
        int result = PutTagged(BinaryTag::kDate, static_cast<std::int32_t>(QVDateGetYear(date)));
        const long offset = QVDateGetOffsetFromUTC(date);
        const long hours = offset / kSecondsPerHour;
        for (const long field :
             {static_cast<long>(QVDateGetMonthOfYear(date)), static_cast<long>(QVDateGetDayOfMonth(date)),
              static_cast<long>(QVDateGetHour(date)), static_cast<long>(QVDateGetMinutes(date)),
              static_cast<long>(QVDateGetSeconds(date)), hours, offset - hours * kSecondsPerHour}) {
            if (result == QVNoErr) result = sink_.PutValue(static_cast<std::uint8_t>(field));
        }
        return result;
    }

    Sink& sink_;
    ContainerPath path_;
    std::vector<OpenContainer> open_;
};

}  // namespace

Owned CreateBinaryData(void* object) {
    MemorySink sink;
    if (Writer(sink).Write(object) != QVNoErr) return Owned();
    return sink.Finish();
}

int WriteBinaryObject(void* stream, void* object) {
    StreamSink sink(stream);
    return Writer(sink).Write(object);
}

}  // namespace qv
