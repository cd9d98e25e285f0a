// Objects that come and go leave nothing behind: not an allocation, not a byte, and no larger process.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

#include <QVFoundation/QVFoundation.h>

#include "runtime/Owned.h"
#include "support/failing_allocator.h"
#include "support/strings.h"
#include "support/temporary_directory.h"

namespace {

using qv::Owned;
using qvtest::MakeString;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

// Temporary objects live as long as so many lives.
constexpr unsigned kLivesPerPool = 1000;
// What the process may grow by for reasons of its own.
constexpr std::size_t kSlack = std::size_t{1} << 20;

// How often an object lives. Together the lives take a few seconds.
constexpr unsigned kMillion = 1'000'000;
constexpr unsigned kCostly = 300'000;    // a quarter of a microsecond and more
constexpr unsigned kLaborious = 10'000;  // microseconds
constexpr unsigned kHuge = 500;          // a megabyte, or key tables
constexpr unsigned kOnDisk = 200;        // each touches a file

// Objects for the lives to work with.
struct World {
    World() { qvtest::WriteFile(directory / "file", "abc"); }

    qvtest::TemporaryDirectory directory;
    Owned path{QVStringCreateWithCString((directory / "file").c_str())};
    Owned null{QVNullCreate()};
    Owned string = MakeString(L"h1 { a: b }");
    Owned longString = MakeString(std::wstring(100, L'x'));
    Owned data{QVDataCreate("0123456789", 10)};
    Owned array{QVArrayCreateWithObject(string.Get())};
    Owned list{QVLinkedListCreate()};
    Owned dictionary{QVDictionaryCreate()};
    Owned element{QVXMLTreeCreateElementNode(string.Get(), nullptr, nullptr, 0)};
};

struct Life {
    const char* create;  // the function that makes the object
    unsigned count;
    // Makes an object, uses it and releases it.
    void (*live)(const World& world);
};

// The end of a life, which there must have been.
void Release(void* object) {
    ASSERT_NE(object, nullptr);
    QVRelease(object);
}

template <void* (*create)()>
void LiveAlone(const World&) {
    Release(create());
}

template <auto create>
void LiveAsNumber(const World&) {
    void* const number = create(1);
    EXPECT_EQ(QVNumberGetSInt32Value(number), 1);
    Release(number);
}

const Life kLives[] = {
    {"QVNullCreate", kMillion, LiveAlone<QVNullCreate>},
    {"QVCallBackCreate", kMillion, [](const World&) { Release(QVCallBackCreate(nullptr, nullptr)); }},
    {"QVTemporaryObjectsPoolCreate", kMillion,
     [](const World& world) {
         const Owned pool{QVTemporaryObjectsPoolCreate()};
         QVTEMPOBJ(QVRetain(world.null.Get()));
     }},

    {"QVNumberCreateWithBool", kMillion, LiveAsNumber<QVNumberCreateWithBool>},
    {"QVNumberCreateWithSInt8", kMillion, LiveAsNumber<QVNumberCreateWithSInt8>},
    {"QVNumberCreateWithSInt16", kMillion, LiveAsNumber<QVNumberCreateWithSInt16>},
    {"QVNumberCreateWithSInt32", kMillion, LiveAsNumber<QVNumberCreateWithSInt32>},
    {"QVNumberCreateWithSInt64", kMillion, LiveAsNumber<QVNumberCreateWithSInt64>},
    {"QVNumberCreateWithUInt8", kMillion, LiveAsNumber<QVNumberCreateWithUInt8>},
    {"QVNumberCreateWithUInt16", kMillion, LiveAsNumber<QVNumberCreateWithUInt16>},
    {"QVNumberCreateWithUInt32", kMillion, LiveAsNumber<QVNumberCreateWithUInt32>},
    {"QVNumberCreateWithUInt64", kMillion, LiveAsNumber<QVNumberCreateWithUInt64>},
    {"QVNumberCreateWithFloat", kMillion, LiveAsNumber<QVNumberCreateWithFloat>},
    {"QVNumberCreateWithDouble", kMillion, LiveAsNumber<QVNumberCreateWithDouble>},

    {"QVDataCreate", kMillion,
     [](const World& world) {
         const Owned data{QVDataCreate("abc", 3)};
         QVDataAppendData(data.Get(), world.data.Get());
     }},
    {"QVDataCreateNoCopy", kMillion,
     [](const World&) {
         char bytes[4];
         Release(QVDataCreateNoCopy(bytes, sizeof bytes, 1));
     }},
    {"QVDataCreateFromFile", kOnDisk,
     [](const World& world) { EXPECT_EQ(QVDataGetSize(QVDataCreateFromFile(world.path.Get())), 3U); }},

    {"QVStringCreate", kMillion,
     [](const World& world) {
         const Owned string{QVStringCreate()};
         QVStringAppendString(string.Get(), world.string.Get());
     }},
    {"QVStringCreateWithCString", kMillion, [](const World&) { Release(QVStringCreateWithCString("text")); }},
    {"QVStringCreateWithCStringAndLength", kMillion,
     [](const World&) { Release(QVStringCreateWithCStringAndLength("text", 4)); }},
    {"QVStringCreateWithWideString", kMillion,
     [](const World&) { Release(QVStringCreateWithWideString(L"text")); }},
    {"QVStringCreateWithWideStringAndLength", kMillion,
     [](const World&) { Release(QVStringCreateWithWideStringAndLength(L"text", 4)); }},
    {"QVStringCreateWithFormat", kCostly,
     [](const World& world) { Release(QVStringCreateWithFormat(world.string.Get())); }},
    {"QVStringCreateWithHashValue128", kMillion,
     [](const World&) {
         Release(QVStringCreateWithHashValue128({1, 2, 3, 4}));
     }},
    {"QVStringCreateCopy", kMillion,
     [](const World& world) { Release(QVStringCreateCopy(world.longString.Get())); }},
    {"QVStringCreateSubString", kMillion,
     [](const World& world) {
         Release(QVStringCreateSubString(world.longString.Get(), {1, 50}));
     }},
    {"QVStringCreateWithData", kMillion,
     [](const World& world) {
         Release(QVStringCreateWithData(world.data.Get(), {QVEncodingUTF8, 0, 0}));
     }},
    {"QVStringCreateDataMac", kMillion,
     [](const World& world) {
         Release(QVStringCreateDataMac(world.longString.Get(), {QVEncodingUTF8, 0, 0}));
     }},
    {"QVScannerCreateWithString", kCostly,
     [](const World& world) {
         const Owned scanner{QVScannerCreateWithString(world.string.Get())};
         void* piece = nullptr;
         EXPECT_EQ(QVScannerScanUpToCharacters(scanner.Get(), L" ", &piece), 1);
     }},

    {"QVArrayCreateWithCapacity", kMillion,
     [](const World& world) {
         const Owned array{QVArrayCreateWithCapacity(0)};
         QVArrayAddObject(array.Get(), world.null.Get());
     }},
    {"QVArrayCreateWithObjects", kMillion,
     [](const World& world) {
         Release(QVArrayCreateWithObjects(world.null.Get(), world.null.Get(), world.null.Get()));
     }},
    {"QVArrayCreateWithObject", kMillion,
     [](const World& world) { Release(QVArrayCreateWithObject(world.null.Get())); }},
    {"QVArrayCreateObjectEnumerator", kMillion,
     [](const World& world) {
         const Owned enumerator{QVArrayCreateObjectEnumerator(world.array.Get())};
         EXPECT_NE(QVEnumeratorNextObject(enumerator.Get()), nullptr);
     }},
    {"QVLinkedListCreate", kMillion,
     [](const World& world) {
         const Owned list{QVLinkedListCreate()};
         QVLinkedListAddObject(list.Get(), world.null.Get());
     }},
    {"QVLinkedListCreateObjectEnumerator", kMillion,
     [](const World& world) { Release(QVLinkedListCreateObjectEnumerator(world.list.Get())); }},
    {"QVDictionaryCreate", kCostly,
     [](const World& world) {
         const Owned dictionary{QVDictionaryCreate()};
         QVDictionarySetObject(dictionary.Get(), world.null.Get(), L"key");
     }},
    {"QVTreeCreate", kCostly,
     [](const World& world) {
         const Owned child{QVTreeCreate()};
         const Owned parent{QVTreeCreate()};
         QVTreeSetContext(child.Get(), world.null.Get());
         QVTreeAddChild(parent.Get(), child.Get());
     }},

    {"QVFileCreate", kCostly, LiveAlone<QVFileCreate>},
    {"QVFileCreateTemporary", kOnDisk,
     [](const World& world) {
         const Owned file{QVFileCreateTemporary(world.path.Get())};
         EXPECT_EQ(QVFileOpenForWriting(file.Get()), QVNoErr);
     }},
    {"QVFileCreateUnique", kOnDisk,
     [](const World& world) { Release(QVFileCreateUnique(world.path.Get())); }},
    {"QVStreamCreateWithData", kCostly,
     [](const World& world) { Release(QVStreamCreateWithData(world.data.Get())); }},
    {"QVStreamCreateWithMemory", kMillion,
     [](const World& world) {
         const Owned stream{QVStreamCreateWithMemory(world.data.Get())};
         unsigned char byte = 0;
         EXPECT_EQ(QVStreamGetUInt8(stream.Get(), &byte), QVNoErr);
     }},
    {"QVStreamCreateWithFile", kOnDisk,
     [](const World& world) {
         const Owned file{QVFileCreate()};
         QVFileSetPath(file.Get(), world.path.Get());
         QVFileOpenForReading(file.Get());
         const Owned stream{QVStreamCreateWithFile(file.Get())};
         unsigned char byte = 0;
         EXPECT_EQ(QVStreamGetUInt8(stream.Get(), &byte), QVNoErr);
     }},
    {"QVInputBitStreamCreateWithData", kMillion,
     [](const World& world) {
         const Owned stream{QVInputBitStreamCreateWithData(world.data.Get(), 80)};
         EXPECT_EQ(QVInputBitStreamGetOneBit(stream.Get()), 0);
     }},
    {"QVOutputBitStreamCreateWithData", kMillion,
     [](const World& world) { Release(QVOutputBitStreamCreateWithData(world.data.Get(), 80)); }},

    {"QVRingListCreate", kMillion,
     [](const World&) {
         const Owned ring{QVRingListCreate()};
         QVRingListSetBufferSize(ring.Get(), 100);
     }},
    {"QVLZSSCreate", kHuge,
     [](const World&) {
         const Owned dictionary{QVLZSSCreate()};
         QVLZSSAppendValue(dictionary.Get(), 'a');
     }},
    {"QVHuffmanCreate", kLaborious,
     [](const World&) {
         const unsigned int frequencies[] = {1, 1, 2};
         const Owned coder{QVHuffmanCreate()};
         QVHuffmanSetFrequencyTable(coder.Get(), frequencies, 3);
         EXPECT_NE(QVHuffmanGetRootTree(coder.Get()), nullptr);
     }},
    {"QVDeflateCreate", kHuge,
     [](const World& world) {
         const Owned encoder{QVDeflateCreate()};
         const Owned result{QVDataCreate(nullptr, 0)};
         const Owned source{QVStreamCreateWithMemory(world.data.Get())};
         const Owned destination{QVStreamCreateWithMemory(result.Get())};
         EXPECT_EQ(QVDeflateEncode(encoder.Get(), destination.Get(), source.Get()), QVNoErr);
     }},

    {"QVMD5Create", kMillion, LiveAlone<QVMD5Create>},
    {"QVBlowfishCreate", kHuge,
     [](const World&) {
         const Owned cipher{QVBlowfishCreate()};
         EXPECT_EQ(QVBlowfishSetKey(cipher.Get(), "secret", 6), 1);
     }},
    {"QVCryptoCreate", kCostly,
     [](const World&) {
         const Owned crypto{QVCryptoCreate()};
         EXPECT_EQ(QVCryptoSetKey(crypto.Get(), "secret", 6, 0), QVNoErr);
     }},
    {"QVArchiveCreate", kOnDisk,
     [](const World& world) {
         const Owned archive{QVArchiveCreate()};
         EXPECT_EQ(QVArchiveNew(archive.Get(), world.path.Get(), nullptr), QVNoErr);
     }},

    {"QVBinaryFormatCreateData", kCostly,
     [](const World& world) { Release(QVBinaryFormatCreateData(world.array.Get())); }},
    {"QVPlistCreateData", kLaborious,
     [](const World& world) { Release(QVPlistCreateData(world.array.Get())); }},
    {"QVXMLTreeCreateData", kLaborious,
     [](const World& world) { Release(QVXMLTreeCreateData(world.element.Get(), 0)); }},
    {"QVXMLTreeCreateDataMac", kLaborious,
     [](const World& world) { Release(QVXMLTreeCreateDataMac(world.element.Get(), 0)); }},
    {"QVXMLTreeCreateDocumentNode", kMillion, LiveAlone<QVXMLTreeCreateDocumentNode>},
    {"QVXMLTreeCreateDocumentTypeNode", kCostly,
     [](const World& world) {
         Release(QVXMLTreeCreateDocumentTypeNode(world.string.Get(), world.string.Get(), world.string.Get()));
     }},
    {"QVXMLTreeCreateElementNode", kMillion,
     [](const World& world) {
         Release(
             QVXMLTreeCreateElementNode(world.string.Get(), world.array.Get(), world.dictionary.Get(), 0));
     }},
    {"QVXMLTreeCreateProcessingInstructionNode", kMillion,
     [](const World& world) { Release(QVXMLTreeCreateProcessingInstructionNode(world.string.Get())); }},
    {"QVXMLTreeCreateTextNode", kMillion,
     [](const World& world) { Release(QVXMLTreeCreateTextNode(world.string.Get())); }},
    {"QVCSSElementCreate", kMillion,
     [](const World& world) {
         const Owned element{QVCSSElementCreate()};
         QVCSSElementSetSelectors(element.Get(), world.array.Get());
     }},
    {"QVCSSParserCreateWithString", kLaborious,
     [](const World& world) {
         const Owned parser{QVCSSParserCreateWithString(world.string.Get())};
         EXPECT_NE(QVCSSParserFindNextCSSElement(parser.Get(), 0, nullptr, nullptr, nullptr), nullptr);
     }},
    {"QVCSSParserCreateCharSetElement", kCostly,
     [](const World&) {
         Release(QVCSSParserCreateCharSetElement(nullptr, {QVEncodingUTF8, 0, 0}));
     }},

    // Dates are made as temporary objects only. Each looks the time zone up.
    {"QVDateNow", kLaborious, [](const World&) { EXPECT_NE(QVDateGetUTCDateTime(QVDateNow()), nullptr); }},
};

// Bytes of memory that the process occupies.
std::size_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    EXPECT_GT(resident, 0U);
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void Live(const Life& life, const World& world, unsigned count) {
    for (unsigned done = 0; done < count; done += kLivesPerPool) {
        const Owned pool{QVTemporaryObjectsPoolCreate()};
        for (unsigned i = 0; i < std::min(kLivesPerPool, count - done); ++i)
            life.live(world);
    }
}

class Growth : public testing::TestWithParam<Life> {
protected:
    void SetUp() override { QVFoundationInit(); }
    void TearDown() override { QVFoundationExit(); }
};

TEST_P(Growth, IsNone) {
    const Life& life = GetParam();
    const unsigned count = kSanitized ? life.count / 100 : life.count;
    const World world;
    Live(life, world, std::min(count, std::max(count / 10, kLivesPerPool)));

    const std::size_t allocations = qvtest::LiveAllocations();
    const std::size_t bytes = qvtest::LiveBytes();
    const std::size_t resident = ResidentBytes();
    Live(life, world, count);
    EXPECT_EQ(qvtest::LiveAllocations(), allocations);
    EXPECT_EQ(qvtest::LiveBytes(), bytes);
    if (!kSanitized) {
        EXPECT_LE(ResidentBytes(), resident + kSlack);
    }
}

std::ostream& operator<<(std::ostream& out, const Life& life) {
    return out << life.create;
}

INSTANTIATE_TEST_SUITE_P(ObjectsOf, Growth, testing::ValuesIn(kLives),
                         [](const auto& life) { return std::string(life.param.create); });

// Functions with "Create" in their names that make no object.
const std::set<std::string> kMakeNothing = {
    "QVCreateCFObject",
    "QVCreateCopy",
    "QVCreateData",
    "QVCreateNSObjectFromArray",
    "QVCreateNSObjectFromData",
    "QVCreateNSObjectFromLinkedList",
    "QVCreateNSObjectFromNumber",
    "QVCreateNSObjectFromString",
    "QVDictionaryCreateData",
    "QVStringCreateCFString",
    "QVStringCreateWithCFString",
    "QVStringCreateWithNSString",
};

TEST(Growth, IsLookedForInEveryKindOfObject) {
    std::set<std::string> listed;
    for (const Life& life : kLives)
        listed.insert(life.create);
    std::ifstream file(QV_EXPORTS_FILE);
    for (std::string name; std::getline(file, name);) {
        if (name.find("Create") == std::string::npos || kMakeNothing.count(name) == 1) continue;
        EXPECT_EQ(listed.count(name), 1U) << name;
    }
}

}  // namespace
