#include "json_objects.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

namespace tool {
namespace {

using nlohmann::json;

constexpr char kDataMember[] = "$data";
constexpr char kDateMember[] = "$date";
// Each level takes several frames of the stack, here and in the JSON parser, and one more step of indentation
// in the text. The library's formats go deeper.
constexpr std::size_t kDeepestNesting = 1000;

class Converter final {
public:
    explicit Converter(Booleans booleans) : booleans_(booleans) {}

    Object Convert(const json& value) {
        switch (value.type()) {
            case json::value_t::object:
                return ConvertObject(value);
            case json::value_t::array:
                return ConvertArray(value);
            case json::value_t::string:
                return Text(value.get_ref<const std::string&>());
            case json::value_t::boolean:
                return ConvertBoolean(value.get<bool>());
            case json::value_t::number_integer:
                return Object(QVNumberCreateWithSInt64(value.get<long long>()));
            case json::value_t::number_unsigned:
                return ConvertUnsigned(value.get<std::uint64_t>());
            case json::value_t::number_float:
                return Object(QVNumberCreateWithDouble(value.get<double>()));
            default:
                Fail("null cannot be stored");
        }
    }

private:
    [[noreturn]] void Fail(const std::string& what) const {
        constexpr std::size_t kShownLength = 200;
        const std::string end = place_.size() > kShownLength ? "..." : "";
        throw Failure(what + " (at " + (place_.empty() ? "/" : place_.substr(0, kShownLength)) + end + ")");
    }

    Object Text(const std::string& text) const {
        return Object(QVStringCreateWithCStringAndLength(text.data(), text.size()));
    }

    Object ConvertBoolean(bool value) const {
        if (booleans_ == Booleans::kAsNumbers) return Object(QVNumberCreateWithUInt8(value ? 1 : 0));
        if (booleans_ == Booleans::kRefuse) {
            Fail("a boolean cannot be read back from this format; --booleans-as-numbers stores 0 or 1");
        }
        return Object(QVNumberCreateWithBool(value ? 1 : 0));
    }

    static Object ConvertUnsigned(std::uint64_t value) {
        if (value <= INT64_MAX) return Object(QVNumberCreateWithSInt64(static_cast<long long>(value)));
        return Object(QVNumberCreateWithUInt64(value));
    }

    // Converts a part under its name, for the messages.
    Object ConvertPart(const std::string& name, const json& value) {
        if (++depth_ > kDeepestNesting) Fail("nested too deep");
        const std::size_t length = place_.size();
        place_ += "/" + name;
        Object part = Convert(value);
        place_.resize(length);
        --depth_;
        return part;
    }

    Object ConvertArray(const json& value) {
        Object array(QVArrayCreateWithCapacity(value.size()));
        for (std::size_t i = 0; i < value.size(); ++i) {
            QVArrayAddObject(array.Get(), ConvertPart(std::to_string(i), value[i]).Get());
        }
        return array;
    }

    Object ConvertObject(const json& value) {
        if (value.size() == 1 && value.contains(kDataMember) && value[kDataMember].is_string()) {
            const std::string& text = value[kDataMember].get_ref<const std::string&>();
            void* data = QVBase64Decode(text.data(), text.size());
            if (data == nullptr) Fail("$data is not Base64");
            return Object(QVRetain(data));
        }
        Object dictionary(QVDictionaryCreate());
        for (const auto& [key, member] : value.items()) {
            if (key.find('\0') != key.npos) Fail("a key with U+0000 cannot be stored");
            const Object keyText = Text(key);
            QVDictionarySetObject(dictionary.Get(), ConvertPart(key, member).Get(),
                                  QVStringGetBuffer(keyText.Get()));
        }
        return dictionary;
    }

    const Booleans booleans_;
    std::string place_;
    std::size_t depth_ = 0;
};

json JsonFromNumber(void* number) {
    switch (QVNumberGetNativeType(number)) {
        case QVNumberTypeBool:
            return QVNumberGetBoolValue(number) != 0;
        case QVNumberTypeFloat:
        case QVNumberTypeDouble:
            return QVNumberGetDoubleValue(number);
        case QVNumberTypeUInt64:
            return QVNumberGetUInt64Value(number);
        default:
            return QVNumberGetSInt64Value(number);
    }
}

json JsonFromObject(void* object, std::size_t depth);

std::string Utf8(void* string) {
    return QVStringGetUTF8String(string);
}

json JsonFromData(void* data) {
    void* text = QVBase64Encode(QVDataGetImutableBuffer(data), QVDataGetSize(data));
    return {{kDataMember,
             std::string(static_cast<const char*>(QVDataGetImutableBuffer(text)), QVDataGetSize(text))}};
}

json JsonFromDate(void* date) {
    const long minutes = QVDateGetOffsetFromUTC(date) / 60;
    char text[96];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld", QVDateGetYear(date),
                  QVDateGetMonthOfYear(date), QVDateGetDayOfMonth(date), QVDateGetHour(date),
                  QVDateGetMinutes(date), QVDateGetSeconds(date), minutes < 0 ? '-' : '+',
                  std::labs(minutes) / 60, std::labs(minutes) % 60);
    return {{kDateMember, text}};
}

json JsonFromArray(void* array, std::size_t depth) {
    json value = json::array();
    for (unsigned long i = 0; i < QVArrayGetCount(array); ++i) {
        value.push_back(JsonFromObject(QVArrayGetObjectAtIndex(array, i), depth));
    }
    return value;
}

json JsonFromDictionary(void* dictionary, std::size_t depth) {
    const Object keys(QVDictionaryKeyArray(dictionary));
    json value = json::object();
    for (unsigned long i = 0; i < QVArrayGetCount(keys.Get()); ++i) {
        void* key = QVArrayGetObjectAtIndex(keys.Get(), i);
        value[Utf8(key)] = JsonFromObject(QVDictionaryGetObject(dictionary, QVStringGetBuffer(key)), depth);
    }
    return value;
}

json JsonFromObject(void* object, std::size_t depth) {
    if (depth > kDeepestNesting) throw Failure("nested too deep for JSON");
    switch (QVGetTypeID(object)) {
        case QVTypeIDNumber:
            return JsonFromNumber(object);
        case QVTypeIDString:
            return Utf8(object);
        case QVTypeIDData:
            return JsonFromData(object);
        case QVTypeIDDate:
            return JsonFromDate(object);
        case QVTypeIDArray:
            return JsonFromArray(object, depth + 1);
        case QVTypeIDDictionary:
            return JsonFromDictionary(object, depth + 1);
        default:
            throw Failure("an object of type " + std::to_string(QVGetTypeID(object)) + " has no JSON form");
    }
}

// Unlike the library's own reading this takes pipes as well: "qvtool pack <(program) OUT".
json ParseFile(const std::string& path) {
    if (std::filesystem::is_directory(path)) throw Failure(path + ": is a directory");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw Failure(SystemText(path));
    try {
        return json::parse(file);
    } catch (const json::exception& error) {
        throw Failure(path + ": " + error.what());
    }
}

}  // namespace

Object ReadJsonFile(const std::string& path, Booleans booleans) {
    const json value = ParseFile(path);
    try {
        return Converter(booleans).Convert(value);
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
}

std::string JsonText(void* object, const std::string& source) {
    try {
        return JsonFromObject(object, 0).dump(2) + "\n";
    } catch (const Failure& failure) {
        throw Failure(source + ": " + failure.what());
    } catch (const json::exception& error) {
        throw Failure(source + ": " + error.what());
    }
}

}  // namespace tool
