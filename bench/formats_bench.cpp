// The binary object format, property lists and style sheets.

#include <cbor.h>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <fstream>
#include <glib.h>
#include <iterator>
#include <map>
#include <memory>
#include <msgpack.h>
#include <plist/plist.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVArray.h>
#include <QVFoundation/QVBinaryFormat.h>
#include <QVFoundation/QVCSSParser.h>
#include <QVFoundation/QVData.h>
#include <QVFoundation/QVDictionary.h>
#include <QVFoundation/QVNumber.h>
#include <QVFoundation/QVPlist.h>
#include <QVFoundation/QVString.h>

#include "bench.h"
#include "inputs.h"

namespace bench {

namespace {

using Handle = std::shared_ptr<void>;

Handle Adopt(void* handle) {
    return {handle, QVRelease};
}

// One record: 10 keys; text, numbers, a list of 8 words and a list of 7 marks. 26 objects.
constexpr std::size_t kRecords = 200;
constexpr std::size_t kTags = 8;
constexpr std::size_t kMarks = 7;

std::string NameOf(std::size_t id) {
    return "customer " + std::to_string(id);
}
std::string TagOf(std::size_t id, std::size_t i) {
    return "tag-" + std::to_string((id * 7 + i * 3) % 100);
}
double BalanceOf(std::size_t id) {
    return static_cast<double>(id) * 12.75;
}

// ---- ours ----

// Gives a new object to a container.
void Put(void* dictionary, const wchar_t* key, void* created) {
    QVDictionarySetObject(dictionary, created, key);
    QVRelease(created);
}
void Add(void* array, void* created) {
    QVArrayAddObject(array, created);
    QVRelease(created);
}

void* MakeRecord(std::size_t id) {
    void* record = QVDictionaryCreate();
    Put(record, L"id", QVNumberCreateWithUInt32(static_cast<unsigned>(id)));
    Put(record, L"name", QVStringCreateWithCString(NameOf(id).c_str()));
    Put(record, L"mail", QVStringCreateWithCString("someone@example.org"));
    Put(record, L"city", QVStringCreateWithCString("Zürich"));
    Put(record, L"balance", QVNumberCreateWithDouble(BalanceOf(id)));
    Put(record, L"created", QVNumberCreateWithSInt64(1'700'000'000LL + static_cast<long long>(id)));
    Put(record, L"visits", QVNumberCreateWithUInt32(static_cast<unsigned>(id % 100)));
    Put(record, L"score", QVNumberCreateWithDouble(0.5));
    void* tags = QVArrayCreateWithCapacity(kTags);
    for (std::size_t i = 0; i < kTags; ++i)
        Add(tags, QVStringCreateWithCString(TagOf(id, i).c_str()));
    Put(record, L"tags", tags);
    void* marks = QVArrayCreateWithCapacity(kMarks);
    for (std::size_t i = 0; i < kMarks; ++i)
        Add(marks, QVNumberCreateWithSInt32(static_cast<int>(id + i)));
    Put(record, L"marks", marks);
    return record;
}

Handle MakeRecords() {
    void* records = QVArrayCreateWithCapacity(kRecords);
    for (std::size_t id = 0; id < kRecords; ++id)
        Add(records, MakeRecord(id));
    return Adopt(records);
}

Bytes BytesOf(void* data) {
    const auto* bytes = static_cast<const std::uint8_t*>(QVDataGetImutableBuffer(data));
    return {bytes, bytes + QVDataGetSize(data)};
}

Bytes Encode(void* object) {
    return BytesOf(Adopt(QVBinaryFormatCreateData(object)).get());
}

// What is decoded encodes to the same bytes again.
void RequireRoundTrip(void* object) {
    const Handle data = Adopt(QVBinaryFormatCreateData(object));
    void* decoded = nullptr;
    Require(QVBinaryFormatReadFromData(data.get(), &decoded) == QVNoErr, "decoding fails");
    Require(Encode(decoded) == BytesOf(data.get()) && QVDataGetSize(data.get()) > 10'000, "another object");
}

// ---- msgpack-c ----

class MessageZone {
public:
    MessageZone() : zone_(msgpack_zone_new(8192)) {}
    MessageZone(const MessageZone&) = delete;
    MessageZone& operator=(const MessageZone&) = delete;
    ~MessageZone() { msgpack_zone_free(zone_); }

    msgpack_object Text(const std::string& text) {
        auto* copy = static_cast<char*>(msgpack_zone_malloc(zone_, text.size()));
        std::memcpy(copy, text.data(), text.size());
        msgpack_object object{};
        object.type = MSGPACK_OBJECT_STR;
        object.via.str = {static_cast<std::uint32_t>(text.size()), copy};
        return object;
    }
    static msgpack_object Unsigned(std::uint64_t value) {
        msgpack_object object{};
        object.type = MSGPACK_OBJECT_POSITIVE_INTEGER;
        object.via.u64 = value;
        return object;
    }
    static msgpack_object Real(double value) {
        msgpack_object object{};
        object.type = MSGPACK_OBJECT_FLOAT64;
        object.via.f64 = value;
        return object;
    }
    msgpack_object Array(std::size_t count) {
        msgpack_object object{};
        object.type = MSGPACK_OBJECT_ARRAY;
        object.via.array.size = static_cast<std::uint32_t>(count);
        object.via.array.ptr =
            static_cast<msgpack_object*>(msgpack_zone_malloc(zone_, count * sizeof(msgpack_object)));
        return object;
    }
    msgpack_object Map(std::size_t count) {
        msgpack_object object{};
        object.type = MSGPACK_OBJECT_MAP;
        object.via.map.size = static_cast<std::uint32_t>(count);
        object.via.map.ptr =
            static_cast<msgpack_object_kv*>(msgpack_zone_malloc(zone_, count * sizeof(msgpack_object_kv)));
        return object;
    }

private:
    msgpack_zone* zone_;
};

msgpack_object MakeMessage(MessageZone& zone) {
    const msgpack_object records = zone.Array(kRecords);
    for (std::size_t id = 0; id < kRecords; ++id) {
        const msgpack_object tags = zone.Array(kTags);
        for (std::size_t i = 0; i < kTags; ++i)
            tags.via.array.ptr[i] = zone.Text(TagOf(id, i));
        const msgpack_object marks = zone.Array(kMarks);
        for (std::size_t i = 0; i < kMarks; ++i)
            marks.via.array.ptr[i] = MessageZone::Unsigned(id + i);
        const msgpack_object record = zone.Map(10);
        const msgpack_object_kv entries[10] = {
            {zone.Text("id"), MessageZone::Unsigned(id)},
            {zone.Text("name"), zone.Text(NameOf(id))},
            {zone.Text("mail"), zone.Text("someone@example.org")},
            {zone.Text("city"), zone.Text("Zürich")},
            {zone.Text("balance"), MessageZone::Real(BalanceOf(id))},
            {zone.Text("created"), MessageZone::Unsigned(1'700'000'000ULL + id)},
            {zone.Text("visits"), MessageZone::Unsigned(id % 100)},
            {zone.Text("score"), MessageZone::Real(0.5)},
            {zone.Text("tags"), tags},
            {zone.Text("marks"), marks}};
        std::copy(std::begin(entries), std::end(entries), record.via.map.ptr);
        records.via.array.ptr[id] = record;
    }
    return records;
}

// The peer packs all of the message.
void RequirePacking(const msgpack_object& message) {
    msgpack_sbuffer buffer;
    msgpack_sbuffer_init(&buffer);
    msgpack_packer packer;
    msgpack_packer_init(&packer, &buffer, msgpack_sbuffer_write);
    Require(msgpack_pack_object(&packer, message) == 0, "the peer fails");
    msgpack_unpacked unpacked;
    msgpack_unpacked_init(&unpacked);
    Require(msgpack_unpack_next(&unpacked, buffer.data, buffer.size, nullptr) == MSGPACK_UNPACK_SUCCESS &&
                msgpack_object_equal(unpacked.data, message),
            "the peer packs something else");
    msgpack_unpacked_destroy(&unpacked);
    msgpack_sbuffer_destroy(&buffer);
}

Comparison CompareEncoding() {
    const Handle records = MakeRecords();
    RequireRoundTrip(records.get());
    const auto zone = std::make_shared<MessageZone>();
    const msgpack_object message = MakeMessage(*zone);
    RequirePacking(message);
    return {Times([records] {
                void* data = QVBinaryFormatCreateData(records.get());
                Keep(data);
                QVRelease(data);
            }),
            Times([zone, message] {
                msgpack_sbuffer buffer;
                msgpack_sbuffer_init(&buffer);
                msgpack_packer packer;
                msgpack_packer_init(&packer, &buffer, msgpack_sbuffer_write);
                msgpack_pack_object(&packer, message);
                Keep(buffer.data);
                msgpack_sbuffer_destroy(&buffer);
            }),
            "msgpack-c (msgpack_pack_object)", kRecords};
}

// ---- libcbor ----

void PutCbor(cbor_item_t* map, const char* key, cbor_item_t* value) {
    Require(cbor_map_add(map, {cbor_move(cbor_build_string(key)), cbor_move(value)}), "the peer fails");
}

Bytes EncodeCbor() {
    cbor_item_t* records = cbor_new_definite_array(kRecords);
    for (std::size_t id = 0; id < kRecords; ++id) {
        cbor_item_t* record = cbor_new_definite_map(10);
        PutCbor(record, "id", cbor_build_uint32(static_cast<std::uint32_t>(id)));
        PutCbor(record, "name", cbor_build_string(NameOf(id).c_str()));
        PutCbor(record, "mail", cbor_build_string("someone@example.org"));
        PutCbor(record, "city", cbor_build_string("Zürich"));
        PutCbor(record, "balance", cbor_build_float8(BalanceOf(id)));
        PutCbor(record, "created", cbor_build_uint64(1'700'000'000ULL + id));
        PutCbor(record, "visits", cbor_build_uint32(static_cast<std::uint32_t>(id % 100)));
        PutCbor(record, "score", cbor_build_float8(0.5));
        cbor_item_t* tags = cbor_new_definite_array(kTags);
        for (std::size_t i = 0; i < kTags; ++i) {
            Require(cbor_array_push(tags, cbor_move(cbor_build_string(TagOf(id, i).c_str()))),
                    "the peer fails");
        }
        PutCbor(record, "tags", tags);
        cbor_item_t* marks = cbor_new_definite_array(kMarks);
        for (std::size_t i = 0; i < kMarks; ++i) {
            Require(cbor_array_push(marks, cbor_move(cbor_build_uint32(static_cast<std::uint32_t>(id + i)))),
                    "the peer fails");
        }
        PutCbor(record, "marks", marks);
        Require(cbor_array_push(records, cbor_move(record)), "the peer fails");
    }
    unsigned char* buffer = nullptr;
    std::size_t room = 0;
    const std::size_t size = cbor_serialize_alloc(records, &buffer, &room);
    Bytes bytes(buffer, buffer + size);
    std::free(buffer);
    cbor_decref(&records);
    return bytes;
}

// The peer reads back what it wrote.
void RequirePeerRoundTrip(const Bytes& bytes) {
    cbor_load_result result;
    cbor_item_t* item = cbor_load(bytes.data(), bytes.size(), &result);
    Require(item != nullptr && cbor_array_size(item) == kRecords && result.read == bytes.size(),
            "the peer reads something else");
    unsigned char* buffer = nullptr;
    std::size_t room = 0;
    const std::size_t size = cbor_serialize_alloc(item, &buffer, &room);
    Require(Bytes(buffer, buffer + size) == bytes, "the peer reads another object");
    std::free(buffer);
    cbor_decref(&item);
}

Comparison CompareDecoding() {
    const Handle records = MakeRecords();
    RequireRoundTrip(records.get());
    RequirePeerRoundTrip(EncodeCbor());
    const Handle data = Adopt(QVBinaryFormatCreateData(records.get()));
    return {DrainPool(Times([data] {
                          void* decoded = nullptr;
                          QVBinaryFormatReadFromData(data.get(), &decoded);
                          Keep(decoded);
                      }),
                      1),
            Times([bytes = EncodeCbor()] {
                cbor_load_result result;
                cbor_item_t* item = cbor_load(bytes.data(), bytes.size(), &result);
                Keep(item);
                cbor_decref(&item);
            }),
            "libcbor (cbor_load, owned objects)", kRecords};
}

// ---- GVariant ----

void BuildVariant() {
    GVariantBuilder records;
    g_variant_builder_init(&records, G_VARIANT_TYPE("aa{sv}"));
    for (std::size_t id = 0; id < kRecords; ++id) {
        g_variant_builder_open(&records, G_VARIANT_TYPE("a{sv}"));
        const auto put = [&](const char* key, GVariant* value) {
            g_variant_builder_add(&records, "{sv}", key, value);
        };
        put("id", g_variant_new_uint32(static_cast<guint32>(id)));
        put("name", g_variant_new_string(NameOf(id).c_str()));
        put("mail", g_variant_new_string("someone@example.org"));
        put("city", g_variant_new_string("Zürich"));
        put("balance", g_variant_new_double(BalanceOf(id)));
        put("created", g_variant_new_int64(1'700'000'000LL + static_cast<gint64>(id)));
        put("visits", g_variant_new_uint32(static_cast<guint32>(id % 100)));
        put("score", g_variant_new_double(0.5));
        GVariantBuilder tags, marks;
        g_variant_builder_init(&tags, G_VARIANT_TYPE("as"));
        for (std::size_t i = 0; i < kTags; ++i)
            g_variant_builder_add(&tags, "s", TagOf(id, i).c_str());
        put("tags", g_variant_builder_end(&tags));
        g_variant_builder_init(&marks, G_VARIANT_TYPE("ai"));
        for (std::size_t i = 0; i < kMarks; ++i)
            g_variant_builder_add(&marks, "i", static_cast<gint32>(id + i));
        put("marks", g_variant_builder_end(&marks));
        g_variant_builder_close(&records);
    }
    GVariant* whole = g_variant_ref_sink(g_variant_builder_end(&records));
    GBytes* bytes = g_variant_get_data_as_bytes(whole);
    Keep(g_bytes_get_size(bytes));
    g_bytes_unref(bytes);
    g_variant_unref(whole);
}

Comparison CompareBuildingAndEncoding() {
    return {Times([] {
                const Handle records = MakeRecords();
                void* data = QVBinaryFormatCreateData(records.get());
                Keep(data);
                QVRelease(data);
            }),
            Times(BuildVariant), "GVariant", kRecords};
}

// ---- property lists ----

constexpr std::size_t kEntries = 100'000;

std::string KeyOf(std::size_t i) {
    return "key-" + std::to_string(i);
}
std::string ValueOf(std::size_t i) {
    return "value <" + std::to_string(i) + ">";
}

Comparison CompareWritingLists() {
    const Handle dictionary = Adopt(QVDictionaryCreate());
    const std::shared_ptr<void> peer(plist_new_dict(), plist_free);
    for (std::size_t i = 0; i < kEntries; ++i) {
        const std::string key = KeyOf(i);
        Put(dictionary.get(), std::wstring(key.begin(), key.end()).c_str(),
            QVStringCreateWithCString(ValueOf(i).c_str()));
        plist_dict_set_item(peer.get(), key.c_str(), plist_new_string(ValueOf(i).c_str()));
    }
    // The peer reads what we wrote.
    const Handle data = Adopt(QVPlistCreateData(dictionary.get()));
    Require(data != nullptr, "nothing written");
    void* read = nullptr;
    plist_from_xml(static_cast<const char*>(QVDataGetImutableBuffer(data.get())),
                   static_cast<std::uint32_t>(QVDataGetSize(data.get())), &read);
    Require(read != nullptr && plist_dict_get_size(read) == kEntries, "the peer reads something else");
    char* value = nullptr;
    plist_get_string_val(plist_dict_get_item(read, KeyOf(4711).c_str()), &value);
    Require(value == ValueOf(4711), "another value");
    std::free(value);
    plist_free(read);
    return {Times([dictionary] {
                void* made = QVPlistCreateData(dictionary.get());
                Keep(made);
                QVRelease(made);
            }),
            Times([peer] {
                char* text = nullptr;
                std::uint32_t size = 0;
                plist_to_xml(peer.get(), &text, &size);
                Keep(text);
                std::free(text);
            }),
            "libplist plist_to_xml", kEntries};
}

// ---- style sheets ----

// A rule as plain values.
struct PlainRule {
    std::vector<std::wstring> selectors;
    std::map<std::wstring, std::wstring> properties;
    std::vector<std::wstring> order;

    bool operator==(const PlainRule&) const = default;
};

// The plain way to the same rules: character by character into the standard library's containers.
class PlainSheet {
public:
    explicit PlainSheet(std::wstring_view sheet) : sheet_(sheet) {}

    bool Next(PlainRule& rule) {
        rule = {};
        while (at_ < sheet_.size() && SkippedBetweenRules()) {
        }
        if (at_ == sheet_.size()) return false;
        const bool hasBody = ReadSelectors(rule);
        if (!hasBody) return true;
        ++at_;  // the brace
        if (!rule.selectors.empty() && rule.selectors.front() == L"@media") return true;
        while (at_ < sheet_.size() && ReadProperty(rule)) {
        }
        return true;
    }

private:
    bool SkippedBetweenRules() {
        if (sheet_[at_] >= 0x20) return SkippedComment();
        ++at_;
        return true;
    }

    bool SkippedComment() {
        if (sheet_.substr(at_, 2) != L"/*") return false;
        const std::size_t end = sheet_.find(L"*/", at_);
        at_ = end == sheet_.npos ? sheet_.size() : end + 2;
        return true;
    }

    std::wstring Collect(std::wstring_view delimiters) {
        std::wstring text;
        while (at_ < sheet_.size() && delimiters.find(sheet_[at_]) == delimiters.npos) {
            if (!SkippedComment()) text += sheet_[at_++];
        }
        return text;
    }

    static std::wstring Trimmed(const std::wstring& text) {
        std::size_t start = 0, end = text.size();
        while (start < end && std::iswspace(static_cast<wint_t>(text[start])))
            ++start;
        while (start < end && std::iswspace(static_cast<wint_t>(text[end - 1])))
            --end;
        return text.substr(start, end - start);
    }

    bool ReadSelectors(PlainRule& rule) {
        std::wstring text = Collect(L"{;}");
        const bool hasBody = at_ < sheet_.size() && sheet_[at_] == L'{';
        if (!hasBody && at_ < sheet_.size()) text += sheet_[at_++];
        std::wstring selector;
        for (const wchar_t character : text + L' ') {
            if (std::wstring_view(L" ,\t\r\n").find(character) == std::wstring_view::npos) {
                selector += character;
            } else if (!selector.empty()) {
                rule.selectors.push_back(std::exchange(selector, {}));
            }
        }
        return hasBody;
    }

    bool ReadProperty(PlainRule& rule) {
        const std::wstring name = Trimmed(Collect(L":}"));
        if (at_ == sheet_.size() || sheet_[at_++] == L'}') return false;
        const std::wstring value = Trimmed(Collect(L";}"));
        if (at_ == sheet_.size()) return false;
        rule.properties[name] = value;
        rule.order.push_back(name);
        return sheet_[at_++] == L';';
    }

    std::wstring_view sheet_;
    std::size_t at_ = 0;
};

std::wstring TextOf(void* string) {
    return {QVStringGetBuffer(string), QVStringGetLength(string)};
}

std::vector<std::wstring> TextsOf(void* array) {
    std::vector<std::wstring> texts;
    for (unsigned long i = 0; i < QVArrayGetCount(array); ++i)
        texts.push_back(TextOf(QVArrayGetObjectAtIndex(array, i)));
    return texts;
}

PlainRule RuleOf(void* element) {
    PlainRule rule{
        TextsOf(QVCSSElementGetSelectors(element)), {}, TextsOf(QVCSSElementGetPropertyOrder(element))};
    void* properties = QVCSSElementGetProperties(element);
    for (const std::wstring& name : rule.order)
        rule.properties[name] = TextOf(QVDictionaryGetObject(properties, name.c_str()));
    Require(QVDictionaryCount(properties) == rule.properties.size(), "other properties");
    return rule;
}

// Hands every element of the sheet to `use`.
template <class Use>
void ParseOurs(void* parser, Use use) {
    unsigned int start = 0, length = 0;
    for (unsigned int from = 0;; from = start + length) {
        void* element = QVCSSParserFindNextCSSElement(parser, from, &start, &length, nullptr);
        if (element == nullptr) return;
        use(element);
    }
}

// Rules of one to three selectors and one to eight declarations.
std::string GeneratedSheet() {
    static constexpr const char* kNames[] = {"color",      "margin-left",      "padding",     "font-family",
                                             "border-top", "background-color", "line-height", "display"};
    static constexpr const char* kValues[] = {"#336699",        "0 auto",      "1.5em 2em", "Georgia, serif",
                                              "1px solid #ccc", "transparent", "150%",      "inline-block"};
    std::string sheet;
    for (std::size_t rule = 0; rule < 2000; ++rule) {
        if (rule % 16 == 0) sheet += "/* section " + std::to_string(rule / 16) + " */\n";
        sheet += "div.section-" + std::to_string(rule);
        for (std::size_t i = 0; i < rule % 3; ++i)
            sheet += ", p.note" + std::to_string(i);
        sheet += " {\n";
        for (std::size_t i = 0; i <= rule % 8; ++i)
            sheet += std::string("  ") + kNames[(rule + i) % 8] + ": " + kValues[(rule * 3 + i) % 8] + ";\n";
        sheet += "}\n";
    }
    return sheet;
}

// The sheet of a packaged framework.
std::string RealSheet() {
    std::ifstream file("/usr/share/bootstrap-html/css/bootstrap.css", std::ios::binary);
    std::string sheet{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    Require(!sheet.empty(), "the package libjs-bootstrap is not on this machine");
    return sheet;
}

Comparison CompareParsing(const std::string& sheet) {
    const Handle string = Adopt(QVStringCreateWithCStringAndLength(sheet.data(), sheet.size()));
    const Handle parser = Adopt(QVCSSParserCreateWithString(string.get()));
    PlainSheet plain({QVStringGetBuffer(string.get()), QVStringGetLength(string.get())});
    PlainRule rule;
    std::size_t rules = 0;
    ParseOurs(parser.get(), [&](void* element) {
        Require(plain.Next(rule) && RuleOf(element) == rule, "another rule");
        ++rules;
    });
    Require(!plain.Next(rule) && rules > 1000, "another number of rules");
    QVTemporaryObjectsPoolHandleEvents();
    return {DrainPool(Times([parser] { ParseOurs(parser.get(), [](void* element) { Keep(element); }); }), 1),
            Times([string] {
                PlainSheet reader({QVStringGetBuffer(string.get()), QVStringGetLength(string.get())});
                std::vector<PlainRule> parsed(1);
                while (reader.Next(parsed.back()))
                    parsed.emplace_back();
                Keep(parsed.data());
            }),
            "plain: std::wstring, std::vector and std::map", static_cast<double>(sheet.size()), true};
}

}  // namespace

void AddFormatsComparisons(Suite& suite) {
    suite.Add("binary.encode", CompareEncoding);
    suite.Add("binary.decode", CompareDecoding);
    suite.Add("binary.build_and_encode", CompareBuildingAndEncoding);
    suite.Add("plist.write_100000", CompareWritingLists);
    suite.Add("css.parse.generated", [] { return CompareParsing(GeneratedSheet()); });
    suite.Add("css.parse.real", [] { return CompareParsing(RealSheet()); });
}

}  // namespace bench
