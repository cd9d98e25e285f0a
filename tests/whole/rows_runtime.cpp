// Handles, library start and end, the log, pools, and the reserved conversions to native objects.
#include <QVFoundation/QVAdditions.h>
#include <QVFoundation/QVLibrary.h>
#include <QVFoundation/QVPlatformObject.h>
#include <QVFoundation/QVTemporaryObjectsPool.h>

#include "support/strings.h"
#include "whole/row.h"

namespace qvtest {
namespace {

using qv::Owned;

constexpr const wchar_t* kNullKey = L"org.qvfoundation.QVFoundation.Null";

// A function that always answers null, whatever it is given.
Row AlwaysNull(const char* name, void* (*function)(void*)) {
    return {name,
            [function](Attempt& attempt) {
                const Owned object{QVNullCreate()};
                attempt.NeedsNoMemory([&] { return function(object.Get()) == nullptr; });
            },
            [function] { return function(nullptr) == nullptr; }};
}

Rows ObjectRows() {
    return {
        {"QVRetain",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.NeedsNoMemory([&] { return QVRetain(object.Get()) == object.Get(); });
             QVRelease(object.Get());
         },
         [] { return QVRetain(nullptr) == nullptr; }},
        {"QVRelease",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             QVRetain(object.Get());
             attempt.NeedsNoMemory([&] { QVRelease(object.Get()); },
                                   [&] { return QVGetRetainCount(object.Get()) == 1; });
         },
         [] {
             QVRelease(nullptr);
             return true;
         }},
        {"QVGetRetainCount",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.NeedsNoMemory([&] { return QVGetRetainCount(object.Get()) == 1; });
         },
         [] { return QVGetRetainCount(nullptr) == 0; }},
        {"QVGetTypeID",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.NeedsNoMemory([&] { return QVGetTypeID(object.Get()) == QVTypeIDNull; });
         },
         [] { return QVGetTypeID(nullptr) == 0; }},
        {"QVCreateCopy",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             bool isNull = false;
             attempt.AlwaysLogs("The object is not support CreateCopy method.");
             attempt.NeedsNoMemory([&] { isNull = QVCreateCopy(object.Get()) == nullptr; },
                                   [&] { return isNull; });
         },
         [] { return QVCreateCopy(nullptr) == nullptr; }},
        {"QVCompareObject",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.NeedsNoMemory([&] { return QVCompareObject(object.Get(), object.Get()) == 0; });
         },
         [] {
             const Owned object{QVNullCreate()};
             return QVCompareObject(nullptr, nullptr) == 0 && QVCompareObject(nullptr, object.Get()) == -1 &&
                    QVCompareObject(object.Get(), nullptr) == 1;
         }},
        AlwaysNull("QVGetNSObject", QVGetNSObject),
        AlwaysNull("QVCreateCFObject", QVCreateCFObject),
        AlwaysNull("QVCreateData", QVCreateData),
        {"QVNullCreate", [](Attempt& attempt) { attempt.Creates(QVNullCreate); }, TakesNoHandle},
        {"QVCallBackCreate",
         [](Attempt& attempt) { attempt.Creates([] { return QVCallBackCreate(nullptr, nullptr); }); },
         TakesNoHandle},
        {"QVCallBackGetAddress",
         [](Attempt& attempt) {
             int address = 0;
             const Owned callback{QVCallBackCreate(&address, nullptr)};
             attempt.NeedsNoMemory([&] { return QVCallBackGetAddress(callback.Get()) == &address; });
         },
         [] { return QVCallBackGetAddress(nullptr) == nullptr; }},
        {"QVCallBackGetContext",
         [](Attempt& attempt) {
             int context = 0;
             const Owned callback{QVCallBackCreate(nullptr, &context)};
             attempt.NeedsNoMemory([&] { return QVCallBackGetContext(callback.Get()) == &context; });
         },
         [] { return QVCallBackGetContext(nullptr) == nullptr; }},
    };
}

Rows LibraryRows() {
    return {
        // A row finds the library up and leaves it so.
        {"QVFoundationInit",
         [](Attempt& attempt) {
             QVFoundationExit();
             // A shared object that cannot be made stays absent, which is no failure.
             attempt.UnderOwnPools().OthersLog().Answers(0, 0, [] { return QVFoundationInit(); });
         },
         TakesNoHandle},
        {"QVFoundationExit",
         [](Attempt& attempt) {
             attempt.UnderOwnPools().NeedsNoMemory([] { return QVFoundationExit() == 0; });
             QVFoundationInit();
         },
         TakesNoHandle},
        {"QVSingletonSetObject",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             attempt.Logs("The dictionary could not insert the value.")
                 .Changes(
                     object.Get(), nullptr,
                     [&] { QVSingletonSetObject(object.Get(), L"a key of some length"); },
                     [] { return QVSingletonGetObject(L"a key of some length"); });
         },
         [] {
             QVSingletonSetObject(nullptr, L"key");
             return QVSingletonGetObject(L"key") == nullptr;
         }},
        {"QVSingletonGetObject",
         [](Attempt& attempt) {
             attempt.NeedsNoMemory([] { return QVSingletonGetObject(kNullKey) != nullptr; });
         },
         TakesNoHandle},
        {"QVLog",
         [](Attempt& attempt) {
             attempt.AlwaysLogs("3 items: more");
             attempt.NeedsNoMemory([] { QVLog(L"%d items: %ls", 3, L"more"); }, [] { return true; });
         },
         TakesNoHandle},
        {"QVRandom", [](Attempt& attempt) { attempt.NeedsNoMemory([] { return QVRandom() >= 0; }); },
         TakesNoHandle},
        {"QVByteOrderGetNativeOrder",
         [](Attempt& attempt) {
             attempt.NeedsNoMemory([] {
                 const int order = QVByteOrderGetNativeOrder();
                 return order == 1 || order == 2;
             });
         },
         TakesNoHandle},
    };
}

Rows PoolRows() {
    return {
        {"QVTemporaryObjectsPoolCreate",
         [](Attempt& attempt) { attempt.Creates(QVTemporaryObjectsPoolCreate); }, TakesNoHandle},
        {"QVTEMPOBJ",
         [](Attempt& attempt) {
             void* const object = QVNullCreate();  // given away, whatever happens
             attempt.Lends([&] { return QVTEMPOBJ(object); });
         },
         [] { return QVTEMPOBJ(nullptr) == nullptr; }},
        {"QVSTR", [](Attempt& attempt) { attempt.OthersLog().Lends([] { return QVSTR(L"text"); }); },
         TakesNoHandle},
        {"QVTemporaryObjectsPoolGetFrontPool",
         [](Attempt& attempt) {
             attempt.NeedsNoMemory([] { return QVTemporaryObjectsPoolGetFrontPool() != nullptr; });
         },
         TakesNoHandle},
        {"QVTemporaryObjectsPoolInstallEventsCallBack",
         [](Attempt& attempt) {
             QVFoundationExit();
             attempt.UnderOwnPools().Changes(
                 true, false, [] { QVTemporaryObjectsPoolInstallEventsCallBack(); },
                 [] { return QVTemporaryObjectsPoolGetFrontPool() != nullptr; });
             QVTemporaryObjectsPoolRemoveEventsCallBack();
             QVFoundationInit();
         },
         TakesNoHandle},
        {"QVTemporaryObjectsPoolRemoveEventsCallBack",
         [](Attempt& attempt) {
             QVFoundationExit();
             QVTemporaryObjectsPoolInstallEventsCallBack();
             attempt.UnderOwnPools().NeedsNoMemory(
                 [] { QVTemporaryObjectsPoolRemoveEventsCallBack(); },
                 [] { return QVTemporaryObjectsPoolGetFrontPool() == nullptr; });
             QVFoundationInit();
         },
         TakesNoHandle},
        {"QVTemporaryObjectsPoolHandleEvents",
         [](Attempt& attempt) {
             const Owned object{QVNullCreate()};
             QVTEMPOBJ(QVRetain(object.Get()));
             attempt.UnderOwnPools().NeedsNoMemory([] { QVTemporaryObjectsPoolHandleEvents(); },
                                                   [&] { return QVGetRetainCount(object.Get()) == 1; });
         },
         TakesNoHandle},
    };
}

Rows PlatformObjectRows() {
    return {
        AlwaysNull("QVCreateNSObjectFromString", QVCreateNSObjectFromString),
        AlwaysNull("QVCreateNSObjectFromNumber",
                   [](void* number) { return QVCreateNSObjectFromNumber(number, 0); }),
        AlwaysNull("QVCreateNSObjectFromData", QVCreateNSObjectFromData),
        AlwaysNull("QVCreateNSObjectFromArray", QVCreateNSObjectFromArray),
        AlwaysNull("QVCreateNSObjectFromLinkedList", QVCreateNSObjectFromLinkedList),
        AlwaysNull("QVStringCreateWithNSString", QVStringCreateWithNSString),
        AlwaysNull("QVStringFromNSString", QVStringFromNSString),
        AlwaysNull("QVStringCreateWithCFString", QVStringCreateWithCFString),
        AlwaysNull("QVStringCreateCFString", QVStringCreateCFString),
    };
}

}  // namespace

Rows RuntimeRows() {
    return Joined({ObjectRows(), LibraryRows(), PoolRows(), PlatformObjectRows()});
}

}  // namespace qvtest
