// Objects, temporary pools and the log.

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <glib.h>
#include <memory>
#include <unistd.h>

#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVObject.h>
#include <QVFoundation/QVString.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "bench.h"
#include "gnustep.h"

namespace bench {

namespace {

struct Peer {
    virtual ~Peer() = default;
};

Comparison CompareCreation() {
    return {Times([] {
                void* object = QVNullCreate();
                Keep(object);
                QVRelease(object);
            }),
            Times([] {
                auto object = std::make_shared<Peer>();
                Keep(object);
            }),
            "std::make_shared"};
}

Comparison CompareRetaining() {
    void* object = QVNullCreate();
    const auto peer = std::make_shared<Peer>();
    Require(QVRetain(object) == object && QVGetRetainCount(object) == 2, "retain count");
    QVRelease(object);
    return {Times([object] {
                QVRetain(object);
                QVRelease(object);
            }),
            Times([peer] {
                auto copy = peer;
                Keep(copy);
            }),
            "std::shared_ptr"};
}

constexpr std::size_t kPerPool = 100;

Comparison CompareTemporaryObjects() {
    const Message autorelease("autorelease");
    const Message release("release");
    return {Times([] {
                void* pool = QVTemporaryObjectsPoolCreate();
                for (std::size_t i = 0; i < kPerPool; ++i)
                    QVTEMPOBJ(QVNullCreate());
                QVRelease(pool);
            }),
            Times([=] {
                const id pool = NewObject("NSAutoreleasePool");
                for (std::size_t i = 0; i < kPerPool; ++i)
                    autorelease(NewObject("NSObject"));
                release(pool);
            }),
            "GNUstep NSAutoreleasePool", kPerPool};
}

Comparison CompareLiterals() {
    static constexpr const wchar_t* kTexts[16] = {
        L"name", L"size",    L"type",    L"path",  L"Compress", L"kind",   L"owner", L"group",
        L"mode", L"created", L"changed", L"label", L"icon",     L"target", L"count", L"checksum"};
    static constexpr const char* kPeerTexts[16] = {"name",  "size",   "type",  "path",    "Compress", "kind",
                                                   "owner", "group",  "mode",  "created", "changed",  "label",
                                                   "icon",  "target", "count", "checksum"};
    Require(QVSTR(L"name") == QVSTR(L"name"), "one string for one text");
    return {Times([] {
                for (const wchar_t* text : kTexts)
                    Keep(QVSTR(text));
            }),
            Times([] {
                for (const char* text : kPeerTexts)
                    Keep(g_intern_string(text));
            }),
            "g_intern_string (16 texts in turn)", 16};
}

Comparison CompareLogLines() {
    return {Times([] { QVLog(L"%d of %ls", 42, L"items"); }),
            Times([number = 0,
                   null = std::shared_ptr<std::FILE>(std::fopen("/dev/null", "w"), std::fclose)]() mutable {
                const std::time_t now = std::time(nullptr);
                std::tm fields{};
                localtime_r(&now, &fields);
                std::fprintf(null.get(), "%02d/%02d/%02d %02d:%02d:%02d[%d] %d of %s\n", fields.tm_year - 100,
                             fields.tm_mon, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec,
                             number++, 42, "items");
            }),
            "fprintf with the date fields, buffered"};
}

}  // namespace

void AddRuntimeComparisons(Suite& suite) {
    suite.Add("object.create_release", CompareCreation);
    suite.Add("object.retain_release", CompareRetaining);
    suite.Add("temporary.object", CompareTemporaryObjects);
    suite.Add("temporary.literal", CompareLiterals);
    suite.Add("log.line", CompareLogLines);
}

}  // namespace bench
