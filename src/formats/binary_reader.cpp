#include "formats/binary_reader.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDate.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVStream.h>
#include <QVFoundation/QVString.h>

#include "base/utf8.h"
#include "collections/date_components.h"
#include "collections/handover.h"
#include "collections/raw_data.h"
#include "formats/binary_tags.h"
#include "formats/container_path.h"

namespace qv {
namespace {

// Where the bytes come from. Both kinds give exactly what is asked for or a result code.
class MemorySource {
public:
    MemorySource(const void* bytes, std::size_t size) : rest_(static_cast<const char*>(bytes), size) {}

    int Get(void* out, std::size_t size) {
        if (size > rest_.size()) return QVErrReadShort;
        if (size > 0) std::memcpy(out, rest_.data(), size);
        rest_.remove_prefix(size);
        return QVNoErr;
    }

    // The bytes up to the next 0, which is consumed. They stay valid until the next call.
    int GetText(std::string_view& bytes) {
        const std::size_t length = rest_.find('\0');
        if (length == rest_.npos) return QVErrReadShort;
        bytes = rest_.substr(0, length);
        rest_.remove_prefix(length + 1);
        return QVNoErr;
    }

    int GetData(std::uint32_t size, Owned& data) {
        if (size > rest_.size()) return QVErrReadShort;
        data.Reset(RequireObject(QVDataCreate(rest_.data(), size)));
        rest_.remove_prefix(size);
        return QVNoErr;
    }

private:
    std::string_view rest_;
};

class StreamSource {
public:
    explicit StreamSource(void* stream) : stream_(stream) {}

    int Get(void* out, std::size_t size) {
        return QVStreamGetBytes(stream_, out, static_cast<unsigned long>(size), nullptr, 1);
    }

    int GetText(std::string_view& bytes) {
        text_.clear();
        for (;;) {
            char byte = 0;
            const int result = Get(&byte, 1);
            if (result != QVNoErr) return result;
            if (byte == '\0') break;
            text_.push_back(byte);
        }
        bytes = text_;
        return QVNoErr;
    }

    // A wrong length must not cost memory that the stream never fills: the Data grows with what is delivered.
    int GetData(std::uint32_t size, Owned& data) {
        constexpr std::uint32_t kStep = 64 * 1024;
        Owned growing{RequireObject(QVDataCreate(nullptr, 0))};
        for (std::uint32_t rest = size; rest > 0;) {
            const std::uint32_t step = std::min(rest, kStep);
            unsigned char* room = ExtendData(growing.Get(), step);
            if (room == nullptr) return QVErrMemory;
            const int result = Get(room, step);
            if (result != QVNoErr) return result;
            rest -= step;
        }
        data = std::move(growing);
        return QVNoErr;
    }

private:
    void* stream_;
    std::string text_;
};

template <class Source>
class Reader {
public:
    explicit Reader(Source& source) : source_(source) {}

    int Read(Owned& object) {
        for (;;) {
            Owned value;
            int result = ReadNext(value);
            if (result == QVErrEndOfObjects && !open_.empty()) {
                value = Close();
                result = QVNoErr;
            }
            if (open_.empty()) {
                object = std::move(value);
                return result;
            }
            if (result != QVNoErr) return result;
            // No value is a container that was opened: its objects come next.
            if (value) HandToTop(std::move(value));
        }
    }

private:
    // A container that is being filled. They are kept on a stack of our own, so that depth costs none of the
    // thread's.
    struct OpenContainer {
        Owned container;
        bool isDictionary;
        std::size_t keyStart;  // where in keys_ the key of its next value stands
    };

    template <class Value>
    int Get(Value& value) {
        return source_.Get(&value, sizeof value);
    }

    int Open(Owned container, bool isDictionary) {
        if (open_.size() == kDeepestNesting) return QVErrFormat;
        if (!container) return QVErrMemory;
        open_.push_back({std::move(container), isDictionary, keysEnd_});
        return QVNoErr;
    }

    Owned Close() {
        Owned container = std::move(open_.back().container);
        open_.pop_back();
        return container;
    }

    void HandToTop(Owned&& value) {
        const OpenContainer& top = open_.back();
        if (top.isDictionary) {
            HandToDictionary(top.container.Get(), std::move(value), keys_.data() + top.keyStart);
        } else {
            HandToArray(top.container.Get(), std::move(value));
        }
    }

    int ReadNext(Owned& value) {
        if (!open_.empty() && open_.back().isDictionary) {
            const int result = ReadKey(open_.back().keyStart);
            if (result != QVNoErr) return result;
        }
        return ReadObject(value);
    }

    int ReadKey(std::size_t start) {
        BinaryTag tag{};
        int result = Get(tag);
        if (result != QVNoErr) return result;
        if (tag == BinaryTag::kEnd) return QVErrEndOfObjects;
        if (tag != BinaryTag::kString) return QVErrFormat;
        std::string_view bytes;
        result = source_.GetText(bytes);
        return result != QVNoErr ? result : KeepKey(start, bytes);
    }

    int KeepKey(std::size_t start, std::string_view bytes) {
        const std::size_t room = start + Utf8ToWideMax(bytes.size()) + 1;
        if (keys_.size() < room) keys_.resize(room);
        const std::optional<std::size_t> length = DecodeUtf8(bytes.data(), bytes.size(), &keys_[start]);
        if (!length) return QVErrMemory;
        keys_[start + *length] = L'\0';
        keysEnd_ = start + *length + 1;
        return QVNoErr;
    }

    int ReadObject(Owned& object) {
        BinaryTag tag{};
        const int result = Get(tag);
        if (result != QVNoErr) return result;
        switch (tag) {
            case BinaryTag::kEnd:
                return QVErrEndOfObjects;
            // A boolean is handed out, but together with a failure: so the format is defined.
            case BinaryTag::kTrue:
            case BinaryTag::kFalse:
                object.Reset(RequireObject(QVNumberCreateWithBool(tag == BinaryTag::kTrue)));
                return QVErrFormat;
            case BinaryTag::kString:
                return ReadString(object);
            case BinaryTag::kUInt8:
                return ReadNumber(object, QVNumberCreateWithUInt8);
            case BinaryTag::kSInt8:
                return ReadNumber(object, QVNumberCreateWithSInt8);
            case BinaryTag::kUInt16:
                return ReadNumber(object, QVNumberCreateWithUInt16);
            case BinaryTag::kSInt16:
                return ReadNumber(object, QVNumberCreateWithSInt16);
            case BinaryTag::kUInt32:
                return ReadNumber(object, QVNumberCreateWithUInt32);
            case BinaryTag::kSInt32:
                return ReadNumber(object, QVNumberCreateWithSInt32);
            case BinaryTag::kUInt64:
                return ReadNumber(object, QVNumberCreateWithUInt64);
            case BinaryTag::kSInt64:
                return ReadNumber(object, QVNumberCreateWithSInt64);
            case BinaryTag::kFloat:
                return ReadNumber(object, QVNumberCreateWithFloat);
            case BinaryTag::kDouble:
                return ReadNumber(object, QVNumberCreateWithDouble);
            case BinaryTag::kData:
                return ReadData(object);
            case BinaryTag::kArray:
                return Open(Owned{QVArrayCreateWithCapacity(0)}, false);
            case BinaryTag::kDictionary:
                return Open(Owned{QVDictionaryCreate()}, true);
            case BinaryTag::kDate:
                return ReadDate(object);
            default:
                return QVErrFormat;
        }
    }

    template <class Value>
    int ReadNumber(Owned& number, void* (*create)(Value)) {
        Value value{};
        const int result = Get(value);
        if (result == QVNoErr) number.Reset(RequireObject(create(value)));
        return result;
    }

    int ReadString(Owned& string) {
        std::string_view bytes;
        const int result = source_.GetText(bytes);
        if (result != QVNoErr) return result;
        Owned text{RequireObject(
            QVStringCreateWithCStringAndLength(bytes.data(), static_cast<unsigned long>(bytes.size())))};
        // Bytes that are not UTF-8 make an empty string.
        if (!bytes.empty() && QVStringGetLength(text.Get()) == 0) return QVErrMemory;
        string = std::move(text);
        return QVNoErr;
    }

    int ReadData(Owned& data) {
        std::uint32_t size = 0;
        const int result = Get(size);
        return result != QVNoErr ? result : source_.GetData(size, data);
    }

    int ReadDate(Owned& date) {
        std::int32_t year = 0;
        std::uint8_t fields[5] = {};
        std::int8_t offset[2] = {};
        int result = Get(year);
        for (std::uint8_t& field : fields) {
            if (result == QVNoErr) result = Get(field);
        }
        for (std::int8_t& part : offset) {
            if (result == QVNoErr) result = Get(part);
        }
        if (result != QVNoErr) return result;
        const DateComponents components = {year, fields[0], fields[1], fields[2], fields[3], fields[4]};
        date.Reset(RequireObject(CreateDateWithComponents(components)));
        QVDateSetOffsetFromUTC(date.Get(), offset[0] * kSecondsPerHour + offset[1] * kSecondsPerMinute);
        return QVNoErr;
    }

    Source& source_;
    std::vector<OpenContainer> open_;
    // The keys of the open dictionaries, one behind the other and each terminated, and room behind them.
    std::wstring keys_;
    std::size_t keysEnd_ = 0;
};

template <class Source>
int ReadFrom(Source source, Owned& object) {
    return Reader<Source>(source).Read(object);
}

}  // namespace

int ReadBinaryObjectFromStream(void* stream, Owned& object) {
    return ReadFrom(StreamSource(stream), object);
}

int ReadBinaryObjectFromData(void* data, Owned& object) {
    return ReadFrom(MemorySource(QVDataGetImutableBuffer(data), QVDataGetSize(data)), object);
}

}  // namespace qv
