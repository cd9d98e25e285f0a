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
            "std::shared_ptr",
            1,
            false,
            EmptyCalls(2)};
}

constexpr std::size_t kPerPool = 100;

// Both pools release what was put into them, once.
void RequireDraining(const PeerClass& poolClass, const PeerClass& objectClass) {
    void* object = QVNullCreate();
    void* pool = QVTemporaryObjectsPoolCreate();
    QVTEMPOBJ(QVRetain(object));
    Require(QVGetRetainCount(object) == 2, "retain count before the pool goes");
    QVRelease(pool);
    Require(QVGetRetainCount(object) == 1, "retain count after the pool has gone");
    QVRelease(object);

    const Message retain("retain");
    const Message autorelease("autorelease");
    const Message release("release");
    const Message retainCount("retainCount");
    const id peerPool = poolClass.NewObject();
    const id peer = objectClass.NewObject();
    autorelease(retain(peer));
    Require(retainCount.Count(peer) == 2, "the peer's retain count before its pool goes");
    release(peerPool);
    Require(retainCount.Count(peer) == 1, "the peer's retain count after its pool has gone");
    release(peer);
}

Comparison CompareTemporaryObjects() {
    const PeerClass poolClass("NSAutoreleasePool");
    const PeerClass objectClass("NSObject");
    const Message autorelease("autorelease");
    const Message release("release");
    RequireDraining(poolClass, objectClass);
    return {Times([] {
                void* pool = QVTemporaryObjectsPoolCreate();
                for (std::size_t i = 0; i < kPerPool; ++i)
                    QVTEMPOBJ(QVNullCreate());
                QVRelease(pool);
            }),
            Times([=] {
                const id pool = poolClass.NewObject();
                for (std::size_t i = 0; i < kPerPool; ++i)
                    autorelease(objectClass.NewObject());
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
